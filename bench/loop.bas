' bench/loop.bas - makes a colour and reads one component, as many times as the argument says.
Dim arguments() As String = Arguments()
Dim sum As Double
For i As Integer = 1 To Val(arguments(0))
  Dim c As NSColorQVX = NSColorQVX.colorWithDeviceRGB(0.25, 0.5, 0.75)
  sum = sum + c.redComponent
Next
Print Str(sum)
