' wants 2 5:1: wanted a variable before '=', found the enumeration Side
Enum Side
  Left
End Enum
Side = 1
