' wants 2 3:11: wanted Length or Count of a String, found Size
Print "must not run"
Print "a".Size
