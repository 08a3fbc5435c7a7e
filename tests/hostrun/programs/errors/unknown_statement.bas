' wants 2 2:1: wanted a statement or a Sub, found Announce, which is not declared
Announce 1, 2
