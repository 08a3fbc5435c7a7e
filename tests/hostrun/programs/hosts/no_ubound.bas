' wants 0 
' options --without RuntimeUBound
' An upper bound that can't be asked for counts as 0, which is too small.
Try
  Dim c As NSColorQVX = NSColorQVX.colorWithColorSpace(NSColorSpaceQVX.deviceRGBColorSpace, 1, 0.5, 0.25, 1)
Catch e As OutOfBoundsException
  Print e.Message
End Try
