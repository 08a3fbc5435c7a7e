' wants 2 3:7: wanted a closing
Print "must not run"
Print "no end
