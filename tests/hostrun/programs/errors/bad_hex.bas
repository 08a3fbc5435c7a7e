' wants 2 3:7: wanted digits of base 16
Print "must not run"
Print &hXY
