' bench/loop_strings.bas - joins two texts and looks at the result: as many turns as the argument says.
Dim arguments() As String = Arguments()
Dim length As Integer
Dim first As String = "Crayons "
Dim second As String = "Cantaloupe"
For i As Integer = 1 To Val(arguments(0))
  Dim name As String = first + second
  length = length + Len(name)
Next
Print Str(length)
