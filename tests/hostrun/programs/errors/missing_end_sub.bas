' wants 2 5:1: wanted 'End Sub' for line 3
Print "must not run"
Sub Foo
Print 1
