' wants 2 3:10: a condition wants Boolean, found Integer
Print "must not run"
Print If(1, 2, 3)
