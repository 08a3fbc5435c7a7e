' wants 2 3:11: wanted a statement, found '#'
Print "must not run"
Dim x = 1 # 2
