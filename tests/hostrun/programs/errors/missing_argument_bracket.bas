' wants 2 3:14: wanted ')' or ',' after an argument
Print "must not run"
Print Abs(1  2)
