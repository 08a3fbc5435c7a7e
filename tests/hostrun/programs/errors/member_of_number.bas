' wants 2 4:9: wanted an object before '.foo', found Integer
Print "must not run"
Dim i As Integer
Print i.foo
