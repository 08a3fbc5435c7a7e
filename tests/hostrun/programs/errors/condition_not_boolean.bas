' wants 2 3:4: a condition wants Boolean, found Integer
Print "must not run"
If 1 Then Print 1
