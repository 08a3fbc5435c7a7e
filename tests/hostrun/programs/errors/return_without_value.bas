' wants 2 4:1: wanted a value of type Integer after Return, found none
Print "must not run"
Function Foo As Integer
Return
End Function
