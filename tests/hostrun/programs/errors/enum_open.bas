' wants 2 4:1: wanted 'End Enum' for line 2, found the end of the program
Enum Side
  Left
