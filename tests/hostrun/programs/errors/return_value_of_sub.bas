' wants 2 4:8: wanted no value after Return here, found one
Print "must not run"
Sub Foo
Return 1
End Sub
