' Literals, operators and conversions.
Print &hFF, &b101, &o17, 1e3, .5, 12345678901
Print 7 + 2, 7 - 2, 7 * 2, 7 / 2, 7 \ 2, 7 Mod 2, 2 ^ 10
Print -7 \ 2, -7 Mod 2, -2 ^ 2, 2 ^ -1
Print 1 + 2 * 3, (1 + 2) * 3, 10 - 4 - 3, 100 / 10 / 2, 17 Mod 5 * 2
Print 2147483647 + 1, "wraps around"
Print 1 / 0, -1 / 0
Print 1 < 2, 2 <= 2, 3 > 4, 3 >= 4, 1 = 1.0, 1 <> 2
Print "a" = "A", "abc" < "ABD", "b" > "a", "a" <> "b"
Print True And False, True Or False, True Xor True, Not False, 12 And 10, 12 Or 3, 12 Xor 10, Not 0
Print "con" + "cat" + "enation", "a ""quoted"" word"

Dim i As Integer = 3.99
Dim d As Double = 3
Dim huge As Double = 1e20, far As Integer = huge
Dim wide As Int64 = 5000000000
Dim single As Single = 0.1
Dim flag As Boolean
Dim text As String
Dim nothing As NSColorQVX
Dim color As Color
Print i, d, far, wide, single, flag, "[" + text + "]", nothing Is Nil, color
Print Integer(3.7), Double(3), Int64(2) * 3000000000

Const kLimit = 10
Const kName As String = "constant"
Const kSum = kLimit * 2 + 1
Print kLimit, kName, kSum

Dim a, b, c As Integer
a = 1 : b = 2 : c = 3
Print a, b, c
a += 10 : b -= 1 : c *= 4
text = "x"
text += "y"
d /= 2
Print a, b, c, text, d
Var inferred = 1.5
Print inferred

' A line that goes on _
Print "one", _
  "two", _ ' with a comment
  "three"
Rem A comment
// Another
PRINT "names and words", "without regard to case", I, KLIMIT

Dim v As Variant
Print v Is Nil
Dim emptyText As String = v
Dim emptyFlag As Boolean = v
Dim emptyColor As Color = v
Dim emptyObject As NSColorQVX = v
Print "[" + emptyText + "]", emptyFlag, emptyColor, emptyObject Is Nil
Try
  Dim emptyNumber As Integer = v
  Print "an Integer", emptyNumber
Catch e As TypeMismatchException
  Print e.Message
End Try
v = 5
Print v, v + 1, v = 5, v > 4.5
v = "text"
Print v, v + "!", v = "TEXT", v = 5
v = &c102030
Print v
v = NSColorQVX.blackColor
Print v, v Is Nil, v IsA NSColorQVX, v IsA NSColorSpaceQVX
Dim back As NSColorQVX = v
Print back Is v

Print &cFF8040.Red, &cFF8040.Green, &cFF8040.Blue
color = RGB(10, 20, 30)
Print color, color.Red, color = &c0A141E, HSV(0.5, 1, 1), CMY(0, 1, 0), RGB(300, -5, 0)
Print &cFF0000.Hue, &c808080.Saturation, &c00FF00.Value
