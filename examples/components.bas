' Every way to read components, on every kind of colour.

Dim a, b, c, d, e As Double

Sub ShowSingles(color As NSColorQVX)
  Print "  RGB", color.redComponent, color.greenComponent, color.blueComponent
  Print "  HSV", color.hueComponent, color.saturationComponent, color.brightnessComponent
  Print "  CMYK", color.cyanComponent, color.magentaComponent, color.yellowComponent, color.blackComponent
  Print "  white", color.whiteComponent, "alpha", color.alphaComponent
End Sub

Sub ShowList(color As NSColorQVX)
  Try
    Dim text() As String
    For Each value As Double In color.Components
      text.Append Str(value)
    Next
    Print "  Components: " + Join(text), "of", color.numberOfComponents
  Catch problem As NSExceptionQVX
    Print "  Components: refused"
  End Try
End Sub

' The forms without alpha take the colour as it is: a colour of another kind is refused, and all outputs are 0.
Sub ShowWithoutAlpha(color As NSColorQVX)
  a = 9
  Try
    color.getRGB a, b, c
    Print "  getRGB", a, b, c
  Catch problem As NSExceptionQVX
    Print "  getRGB refused, red is", a
  End Try
  a = 9
  Try
    color.getHSV a, b, c
    Print "  getHSV", a, b, c
  Catch problem As NSExceptionQVX
    Print "  getHSV refused, hue is", a
  End Try
  a = 9
  Try
    color.getCMYK a, b, c, d
    Print "  getCMYK", a, b, c, d
  Catch problem As NSExceptionQVX
    Print "  getCMYK refused, cyan is", a
  End Try
  a = 9
  Try
    color.getWhite a
    Print "  getWhite", a
  Catch problem As NSExceptionQVX
    Print "  getWhite refused, white is", a
  End Try
End Sub

' With alpha, RGB and HSV convert first when they must. The HSV form gives red, green, blue and alpha.
Sub ShowWithAlpha(color As NSColorQVX)
  color.getRGB a, b, c, d
  Print "  getRGB with alpha", a, b, c, d
  color.getHSV a, b, c, d
  Print "  getHSV with alpha", a, b, c, d
  Try
    color.getCMYK a, b, c, d, e
    Print "  getCMYK with alpha", a, b, c, d, e
  Catch problem As NSExceptionQVX
    Print "  getCMYK with alpha refused"
  End Try
  Try
    color.getWhite a, b
    Print "  getWhite with alpha", a, b
  Catch problem As NSExceptionQVX
    Print "  getWhite with alpha refused"
  End Try
End Sub

Sub Show(title As String, color As NSColorQVX)
  Print title
  Print "  value", color.colorValue
  ShowSingles color
  ShowList color
  ShowWithoutAlpha color
  ShowWithAlpha color
End Sub

Show "RGB", NSColorQVX.colorWithCalibratedRGB(1, 0.5, 0.25, 0.75)
Show "Gray", NSColorQVX.colorWithCalibratedWhite(0.5, 0.5)
Show "CMYK", NSColorQVX.colorWithDeviceCMYK(0.25, 0.5, 0.75, 0)
Show "Named", NSColorQVX.controlTextColor
Show "Pattern", NSColorQVX.colorWithPatternImage(New NSImageQVX(2, 2, &c336699))
Show "Empty", New NSColorQVX

' Beyond the usual range.
Print "Pure red by getHSV with alpha:"
NSColorQVX.redColor.getHSV a, b, c, d
Print "  ", a, b, c, d

' Colours made of others.
Dim mixed As NSColorQVX = NSColorQVX.redColor.blendedColorWithFraction(0.5, NSColorQVX.blueColor)
Print "Half red, half blue:", mixed.colorValue
Print "See-through red:", NSColorQVX.redColor.colorWithAlphaComponent(0.25).alphaComponent
Print "Shadowed white:", NSColorQVX.whiteColor.shadowWithLevel(0.5).colorUsingColorSpaceName("NSCalibratedRGBColorSpace").colorValue
Print "Highlighted black:", NSColorQVX.blackColor.highlightWithLevel(0.5).colorUsingColorSpaceName("NSCalibratedRGBColorSpace").colorValue
