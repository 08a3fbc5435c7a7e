' wants 1 15:23: uncaught NSExceptionQVX: ***
' What nobody catches ends the program: where, what, and by which calls.
Sub Inner(c As NSColorQVX)
  Outermost c
End Sub
Sub Outermost(c As NSColorQVX)
  If c Is Nil Then Print "nil"
  Reach c
End Sub

Print "before"
Inner NSColorQVX.redColor

Sub Reach(c As NSColorQVX)
  Dim h As Double : c.getWhite(h)
  Print "not reached"
End Sub
