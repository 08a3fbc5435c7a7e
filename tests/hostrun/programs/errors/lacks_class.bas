' wants 2 3:1: wanted a statement, found 'Class': classes can't be declared here
Print "must not run"
Class Thing
  Dim x As Integer
End Class
