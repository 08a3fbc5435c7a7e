' If(condition, a, b) chooses a value; the other is not evaluated.
Function Say(text As String) As String
  Print "evaluated", text
  Return text
End Function

Print If(1 < 2, Say("yes"), Say("no"))
Dim x As Double = If(False, 1, 2.5)
Dim n As Integer = If(x > 2, 7, 8)
Print x, n, If(n = 8, "eight", If(n = 7, "seven", "other"))
Dim c As NSColorQVX = If(True, NSColorQVX.redColor, Nil)
Print c.redComponent, If(False, c, Nil) Is Nil
Dim v As Variant = If(True, 1, "one")
Print v, If(False, 1, "one"), If(True, &cFF0000, &c00FF00)
Print If(False, 1, Nil) Is Nil

' Of two classes the one above the other, in either order; else anything.
Print If(True, New OutOfBoundsException("below"), New RuntimeException("above")).Message
Print If(True, New RuntimeException("above"), New OutOfBoundsException("below")).Message
Dim either As Variant = If(True, NSColorQVX.redColor, New RuntimeException("neither"))
Print either IsA NSColorQVX
If If(True, True, False) Then Print "nested"

Dim before As Double = Milliseconds
Dim micro As Double = Microseconds
Dim ticks60 As Integer = Ticks
Print before > 0, Milliseconds >= before, Milliseconds * 1000 >= micro, Ticks >= ticks60
