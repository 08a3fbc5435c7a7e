' wants 2 4:3: wanted a new name, found Side.left, which is declared in this block already
Enum Side
  Left
  left
End Enum
