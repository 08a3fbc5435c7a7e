' wants 2 2:1: wanted a statement or a Sub, found Prnt, which is not declared; did you mean Print?
Prnt "hello"
