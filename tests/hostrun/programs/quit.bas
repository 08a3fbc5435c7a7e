' wants 7 
Dim c As NSColorQVX = NSColorQVX.redColor
Try
  Print "before"
  Quit 7
Finally
  Print "Quit is no exception"
End Try
