' wants 2 4:32: argument 1 (white) of getWhite wants a variable of type Double, found Integer
Print "must not run"
Dim i As Integer
NSColorQVX.whiteColor.getWhite(i)
