' wants 2 3:1: '+=' does not work on String and Integer; Str(...) makes text of a number
Dim text As String = "a"
text += 5
