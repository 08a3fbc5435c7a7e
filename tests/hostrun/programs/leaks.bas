' wants 1 still alive at the end:
' What is still alive is named by its class and the line that made it. Rings keep themselves alive.
For i As Integer = 1 To 2
  Dim ring() As Variant
  ring.Append ring
  If i = 1 Then ring.Append Array(NSColorQVX.redColor, NSColorQVX.blueColor)
  ring.Append New NSColorListQVX
  ring.Append "text " + Str(i)
  Dim fine As NSColorQVX = NSColorQVX.greenColor
  If i = 2 Then ring.Append New RuntimeException("kept " + Str(i), i)
Next
