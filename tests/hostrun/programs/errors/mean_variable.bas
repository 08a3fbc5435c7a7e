' wants 2 3:7: wanted a variable, a function or a class, found color1, which is not declared; did you mean colour1?
Dim colour1 As Integer
Print color1
