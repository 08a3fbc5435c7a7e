' bench/loop_exceptions.bas - raises an exception and catches it: as many turns as the argument says.
Dim arguments() As String = Arguments()
Dim caught As Integer
For i As Integer = 1 To Val(arguments(0))
  Try
    Raise New RuntimeException
  Catch e As RuntimeException
    caught = caught + 1
  End Try
Next
Print Str(caught)
