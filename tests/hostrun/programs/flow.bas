' Branches, loops and routines.
Dim n As Integer
If n = 0 Then Print "single line"
If n = 1 Then Print "no" Else Print "single line else"
If n = 0 Then Print "first" : Print "second" : : Print "third" Else Print "no"
If n = 1 Then Print "no" : Print "no" : Else Print "else behind a colon"
If n = 0 Then Print "colon at the end" :
If n = 1 Then
  Print "no"
ElseIf n = 0 Then
  Print "ElseIf"
Else
  Print "no"
End If

For i As Integer = 1 To 3
  Print "For", i
Next
For i As Integer = 10 DownTo 1 Step 4
  Print "DownTo", i
Next i
For x As Double = 0 To 1 Step 0.25
  If x = 0.5 Then Continue
  Print "Step", x
Next
For i As Integer = 5 To 1
  Print "never"
Next
Dim k As Integer
For k = 1 To 2
Next
Print "After the loop", k

While n < 5
  n = n + 1
  If n = 2 Then Continue While
  If n = 4 Then Exit While
  Print "While", n
Wend
Do Until n = 2
  n = n - 1
  Print "Do", n
Loop
Do
  n = n + 1
Loop While n < 10
Print n

' The outer loop is left from the inner one.
For i As Integer = 1 To 3
  Do
    If i = 2 Then Exit For
    Print "outer", i
    Exit Do
  Loop
Next

For Each word As String In Split("alpha beta gamma", " ")
  If word = "beta" Then Continue For
  Print word
Next

For i As Integer = 0 To 12
  Select Case i
  Case 0
    Print i, "zero"
  Case 1, 3, 5
    Print i, "odd"
  Case 6 To 8
    Print i, "range"
  Case Is >= 11
    Print i, "large"
  Case Else
    Print i, "else"
  End Select
Next
Select Case "Red"
Case "blue"
  Print "no"
Case "red"
  Print "text without regard to case"
End Select

Function Factorial(n As Integer) As Double
  If n <= 1 Then Return 1
  Return n * Factorial(n - 1)
End Function
Function Describe(a As Integer) As String
  Return "Integer"
End Function
Function Describe(a As String) As String
  Return "String"
End Function
Function NoReturn As Integer
End Function
Sub Early(stop As Boolean)
  If stop Then Exit Sub
  Print "not stopped"
End Sub
Sub Swap(ByRef a As Integer, ByRef b As Integer)
  Dim t As Integer = a
  a = b
  b = t
End Sub
Sub Options(a As Integer, b As Integer = 5, c As String = "default")
  Print a, b, c
End Sub
Function Total(ParamArray values As Double) As Double
  Dim sum As Double
  For Each value As Double In values
    sum += value
  Next
  Return sum
End Function
Function Even(n As Integer) As Boolean
  Return n = 0 Or Odd(n - 1)
End Function
Function Odd(n As Integer) As Boolean
  Return n <> 0 And Even(n - 1)
End Function

Print Factorial(10), Describe(1), Describe("x"), NoReturn
Early True
Early False
Dim p As Integer = 1, q As Integer = 2
Swap p, q
Print p, q
Dim list() As Integer = Array(7, 8)
Swap list(0), list(1)
Print list(0), list(1)
Options 1
Options 1, 2
Options 1, 2, "three"
Print Total(1, 2.5, 3), Total()
Print Even(10), Odd(10)
' Routines see the program's own variables.
Sub Bump
  n = n + 1
End Sub
Bump
Bump
Print n

' On one line, what stands behind Else belongs to it, up to the end of the line.
For Each yes As Boolean In Array(True, False)
  If yes Then Print "then" : Print "also then" Else Print "else" : Print "also else"
Next

' A routine may be named by a word that begins a statement elsewhere.
Sub Stop(n As Integer)
  Print "stop", n
End Sub
Stop 1
