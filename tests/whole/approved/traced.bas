' A call with outputs, one that the platform refuses, a list that is passed on, an object that ends.
Dim r, g, b, a As Double
NSColorQVX.colorWithDeviceRGB(1, 0.5, 0).getRGB r, g, b, a
Try
  NSColorQVX.redColor.getWhite r
Catch e As NSExceptionQVX
  Print e.Message
End Try
Dim list As New NSColorListQVX
Print list.Create("traced"), list.name
list.setColor NSColorQVX.redColor, "key"
