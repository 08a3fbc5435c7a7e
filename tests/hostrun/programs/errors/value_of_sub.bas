' wants 2 5:7: wanted a value, found a call that gives none
Print "must not run"
Sub Foo
End Sub
Print Foo()
