' bench/loop_properties.bas - sets a property of a host object and gets it: as many turns as the argument says.
Dim arguments() As String = Arguments()
Dim thing As New RuntimeException
Dim sum As Double
For i As Integer = 1 To Val(arguments(0))
  thing.ErrorNumber = i
  sum = sum + thing.ErrorNumber
Next
Print Str(sum)
