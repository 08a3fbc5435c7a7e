' Lists come and go, and a colour at the address of a former one is not mistaken for it.
For i As Integer = 1 To 50
  Dim list As New NSColorListQVX
  If Not list.Create("Short-lived") Then Print "not created"
  If list.Load("A list that no one has") Then Print "loaded"
  Dim colors() As NSColorQVX
  For k As Integer = 1 To 20
    colors.Append NSColorQVX.colorWithDeviceCMYK(k / 20, 0, 0, 0)
  Next
  For k As Integer = 1 To 20
    If Not (colors(k - 1) IsA NSColorQVX) Then Print "no colour", i, k
    If Abs(colors(k - 1).cyanComponent - k / 20) > 0.001 Then Print "wrong colour", i, k
  Next
Next
Print "done"
