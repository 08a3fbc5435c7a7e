' wants 2 3:28: wanted a default for b
Print "must not run"
Sub Foo(a As Integer = 1,  b As Integer)
End Sub
