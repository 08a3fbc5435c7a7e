' wants 2 3:6: wanted 'As' and a type
Print "must not run"
Dim x
