' wants 2 4:33: c wants NSColorQVX, found NSColorSpaceQVX
Print "must not run"
Dim s As New NSColorSpaceQVX
Dim c As NSColorQVX       =     s
