' wants 2 2:5: wanted a variable's name, found 'If'
Dim If As Integer
