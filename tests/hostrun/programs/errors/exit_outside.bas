' wants 2 3:1: wanted Exit inside of a loop, found it outside
Print "must not run"
Exit
