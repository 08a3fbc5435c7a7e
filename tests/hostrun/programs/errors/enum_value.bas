' wants 2 5:7: wanted a value, found the enumeration Side; name one of its members
Enum Side
  Left
End Enum
Print Side
