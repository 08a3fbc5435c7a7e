' Enumerations, constants and variables that keep their value.
Enum Channel
  Red
  Green
  ' a comment and an empty line

  Blue = 7
  Alpha
End Enum

Const kFirst = Channel.Red
Print kFirst, Channel.Green, channel.BLUE, Channel.Alpha
Dim c As Channel = Channel.Blue
Select Case c
Case Channel.Red
  Print "red"
Case Channel.Blue
  Print "blue", Name(c)
End Select
Dim list() As Channel = Array(Channel.Alpha, Channel.Red)
Print list

Function Name(which As Channel) As String
  Return If(which = Channel.Blue, "the blue one", "another")
End Function

Enum Sign : Minus = -1 : Zero : Plus : End Enum
Print Sign.Minus, Sign.Zero, Sign.Plus
Dim enum As Integer = 5
enum = enum + 1
Print enum

Function NextNumber() As Integer
  Static last As Integer = 10, calls As Integer
  last += 1
  calls += 1
  Return last * 100 + calls
End Function
Print NextNumber(), NextNumber(), NextNumber()

Function Remember(text As String) As String
  Static all As String = "first " & text
  Static colour As NSColorQVX = NSColorQVX.redColor
  all &= "+" & text
  Return all & " " & Str(colour.redComponent)
End Function
Print Remember("a"), Remember("b")

For i As Integer = 1 To 3
  Static kept As Integer
  Dim anew As Integer
  kept += 1
  anew += 1
  Print kept, anew
Next
