' wants 2 3:5: wanted 'As' and a type, or '=' and a value, for a
Print "must not run"
Dim a, b = 5
