' wants 2 4:1: wanted 'Loop' for line 3
Print "must not run"
Do
