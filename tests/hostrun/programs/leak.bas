' wants 1   1 array, made in line 3
' A ring keeps itself alive.
Dim ring() As Variant
ring.Append ring
