' wants 2 3:13: wanted ')' to close '('
Print "must not run"
Print (1 + 2
