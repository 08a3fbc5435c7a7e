' wants 2 4:1: wanted 'Wend' for line 3
Print "must not run"
While True
