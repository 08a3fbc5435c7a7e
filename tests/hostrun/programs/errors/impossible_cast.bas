' wants 2 4:7: wanted a value that can be NSColorQVX, found NSColorSpaceQVX
Print "must not run"
Dim s As New NSColorSpaceQVX
Print NSColorQVX(s)
