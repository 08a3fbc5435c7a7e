' wants 2 5:12: wanted a member of Side, found Top, which it does not have
Enum Side
  Left
End Enum
Print Side.Top
