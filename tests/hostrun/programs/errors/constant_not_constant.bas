' wants 2 3:11: the constant k wants a constant
Print "must not run"
Const k = Rnd()
