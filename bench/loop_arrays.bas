' bench/loop_arrays.bas - writes an element of an array and reads it: as many turns as the argument says.
Dim arguments() As String = Arguments()
Dim components(3) As Double
Dim sum As Double
For i As Integer = 1 To Val(arguments(0))
  components(i Mod 4) = i
  sum = sum + components(2)
Next
Print Str(sum)
