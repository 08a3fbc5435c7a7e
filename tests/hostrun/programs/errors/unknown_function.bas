' wants 2 3:1: wanted a function, an array or a class before '(', found Foo
Print "must not run"
Foo(1)
