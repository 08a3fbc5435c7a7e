' wants 2 3:7: If(...) wants a condition and two values, found 2 arguments
Print "must not run"
Print If(True, 1)
