' Who holds what, and for how long.
Dim first As NSColorQVX = NSColorQVX.controlColor
Dim second As NSColorQVX = NSColorQVX.controlColor
Print first Is second
Dim space As NSColorSpaceQVX = NSColorQVX.redColor.colorSpace
Print space Is NSColorQVX.blueColor.colorSpace

' The image of a pattern is the object that it was made of.
Dim image As New NSImageQVX(3, 2, &c112233)
Dim pattern As NSColorQVX = NSColorQVX.colorWithPatternImage(image)
Dim back As NSImageQVX = pattern.patternImage
Print back Is image, back.width, back.height
Print NSColorQVX.colorWithPatternImage(Nil) Is Nil, NSColorQVX.colorWithPatternImage("no image") Is Nil

' Nil for what there is none of.
Print (New NSColorQVX).colorSpace Is Nil, (New NSColorQVX).CGColorHandle, (New NSColorListQVX).name = ""
Print first._exception Is Nil

' A handle stands for the same colour while the colour lives.
Dim orange As NSColorQVX = NSColorQVX.colorWithDeviceRGB(1, 0.5, 0)
Dim handle As Integer = orange.CGColorHandle
Print handle <> 0, NSColorQVX.colorWithCGColor(handle).colorValue

' Many of them come and go.
For i As Integer = 1 To 2000
  Dim c As NSColorQVX = NSColorQVX.colorWithDeviceRGB(i / 2000, 0, 0)
  Dim list() As Double = c.Components
  If list(0) <> c.redComponent Then Print "differs", i
Next
Print "done"

' The end of a long chain of owners is freed as its beginning is, and so is what somebody finds on the way.
Dim chain() As Variant
For i As Integer = 1 To 1000
  Dim owner() As Variant
  owner.Append chain
  owner.Append NSColorQVX.colorWithDeviceWhite(i / 1000)
  chain = owner
Next
chain = Nil
Print "freed"

Sub Keep(c As NSColorQVX)
  first = c
End Sub
Keep NSColorQVX.colorWithDeviceWhite(0.25)
Print first.whiteComponent
