' wants 2 4:6: no form of Create takes (Integer, Integer, Integer)
Print "must not run"
Dim l As New NSColorListQVX
If l.Create(1, 2, 3) Then Print 1
