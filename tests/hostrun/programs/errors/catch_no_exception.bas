' wants 2 5:12: Catch wants an exception
Print "must not run"
Try
Print 1
Catch e As NSColorQVX
End Try
