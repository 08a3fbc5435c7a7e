' wants 2 4:10: Left wants a constant, found a value that only running gives
Print "must not run"
Enum Side
  Left = Len("a")
End Enum
