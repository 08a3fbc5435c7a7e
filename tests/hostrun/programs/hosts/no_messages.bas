' wants 0 
' options --without REALSetPropValueString
' options --without REALBuildString
' Exceptions without a message.
Try
  Dim c As NSColorQVX = NSColorQVX.colorWithColorSpace(Nil, 1)
Catch e As NilObjectException
  Print "caught", e.Message = "", e.ErrorNumber
End Try
