' wants 2 4:1: wanted a routine outside of every block
Print "must not run"
If True Then
Sub Foo
End Sub
End If
