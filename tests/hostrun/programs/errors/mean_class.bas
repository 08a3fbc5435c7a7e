' wants 2 3:7: wanted a variable, a function or a class, found NSColourQVX, which is not declared; did you mean NSColorQVX
Print "must not run"
Print NSColourQVX.redColor
