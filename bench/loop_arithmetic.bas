' bench/loop_arithmetic.bas - adds, multiplies, compares: as many turns as the argument says, no call of the bundle.
Dim arguments() As String = Arguments()
Dim sum As Double
Dim small As Integer
For i As Integer = 1 To Val(arguments(0))
  sum = sum * 0.5 + i * 2
  If sum > 1000 Then small = small + 1
Next
Print Str(sum + small)
