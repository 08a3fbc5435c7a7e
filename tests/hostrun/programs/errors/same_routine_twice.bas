' wants 2 5:5: wanted a new routine, found foo, which line 3 declares with the same parameters
Print "must not run"
Sub Foo
End Sub
Sub foo
End Sub
