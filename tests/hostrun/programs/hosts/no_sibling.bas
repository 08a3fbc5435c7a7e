' wants 0 
' options --no-sibling
' Without the sibling part there is no cache: each conversion makes an object of its own.
Dim first As NSColorQVX = NSColorQVX.controlColor
Print first Is NSColorQVX.controlColor
Print first.colorNameComponent
Print NSColorQVX.redColor.redComponent, NSColorQVX.whiteColor.redComponent
Try
  Print NSColorQVX.colorWithColorSpace(Nil, 1) Is Nil
Catch e As NilObjectException
  Print e.Message
End Try
Dim w As Double = 4
NSColorQVX.redColor.getWhite w
Print w
