' wants 2 3:33: wanted no parameter after a parameter array
Print "must not run"
Sub Foo(ParamArray a As Double, b As Integer)
End Sub
