' Colours of every kind: made, read and printed.

Sub Show(title As String, c As NSColorQVX)
  Print title
  Print "  space " + c.colorSpaceName + ", " + Str(c.numberOfComponents) + " components, value", c.colorValue
  Print "  " + c.description
End Sub

Dim orange As NSColorQVX = NSColorQVX.colorWithDeviceRGB(1, 0.5, 0)
Show "Device RGB", orange
Print "  red", orange.redComponent, "green", orange.greenComponent, "blue", orange.blueComponent
Print "  alpha", orange.alphaComponent, "(the default of the declaration)"

Dim glass As NSColorQVX = NSColorQVX.colorWithCalibratedRGB(0.2, 0.4, 0.6, 0.25)
Show "Calibrated RGB, see-through", glass
Print "  hue", glass.hueComponent, "saturation", glass.saturationComponent, "brightness", glass.brightnessComponent
Print "  alpha", glass.alphaComponent

Dim screen As NSColorQVX = NSColorQVX.colorWithSRGB(0.25, 0.5, 0.75)
Print "sRGB"
Print "  red", screen.redComponent, "green", screen.greenComponent, "blue", screen.blueComponent
Print "  value", screen.colorValue

Dim ink As NSColorQVX = NSColorQVX.colorWithDeviceCMYK(0.1, 0.2, 0.3, 0.4)
Show "Device CMYK", ink
Print "  cyan", ink.cyanComponent, "magenta", ink.magentaComponent, "yellow", ink.yellowComponent, "black", ink.blackComponent
Print "  red, which it does not have:", ink.redComponent

Dim pink As NSColorQVX = NSColorQVX.colorWithDeviceHSV(0, 0.5, 1)
Show "Device HSV", pink
Dim sky As NSColorQVX = NSColorQVX.colorWithCalibratedHSV(0.5, 1, 1)
Show "Calibrated HSV", sky

Dim gray As NSColorQVX = NSColorQVX.colorWithDeviceWhite(0.5)
Show "Device gray", gray
Print "  white", gray.whiteComponent
Print "Calibrated gray", NSColorQVX.colorWithCalibratedWhite(1).colorValue
Print "Gamma 2.2 gray has white", NSColorQVX.colorWithGenericGamma22White(0.25).whiteComponent

Print "Predefined"
Print "  black", NSColorQVX.blackColor.colorValue, "white", NSColorQVX.whiteColor.colorValue
Print "  red", NSColorQVX.redColor.colorValue, "green", NSColorQVX.greenColor.colorValue, "blue", NSColorQVX.blueColor.colorValue
Print "  clear has alpha", NSColorQVX.clearColor.alphaComponent

' A system colour is known by name.
Dim control As NSColorQVX = NSColorQVX.controlColor
Print "System colour " + control.colorNameComponent + " of catalog " + control.catalogNameComponent

' The same platform colour is the same object, as long as somebody holds it.
Dim once As NSColorQVX = NSColorQVX.blackColor
Dim twice As NSColorQVX = NSColorQVX.blackColor
Print "One object for one colour:", once Is twice

' Without a colour space there is no colour.
Try
  orange = NSColorQVX.colorWithColorSpace(Nil, 1, 0.5, 0, 1)
  Print "not reached"
Catch e As NilObjectException
  Print "NilObjectException:", e.Message
End Try
Try
  Dim values() As Double
  orange = NSColorQVX.colorWithColorSpace(New NSColorSpaceQVX, values)
  Print "not reached"
Catch e As RuntimeException
  Print "An empty space counts as none:", e.Message
End Try
