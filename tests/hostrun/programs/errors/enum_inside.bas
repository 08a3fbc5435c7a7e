' wants 2 3:3: wanted an enumeration outside of every block, found 'Enum'
If True Then
  Enum Side
  End Enum
End If
