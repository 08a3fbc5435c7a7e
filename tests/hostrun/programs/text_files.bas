' Text files, line by line and whole.
Dim folder As FolderItem = SpecialFolder.NewTemporary
Dim item As FolderItem = folder.Child("lines.txt")

Dim out As TextFile = TextFile.Create(item)
out.WriteLine "grün"
out.WriteLine
out.Write "a" & Chr(13) & "b" & Chr(13) & Chr(10)
out.Write "last"
out.Close
out = TextFile.Append(item.NativePath)
out.WriteLine "!"
out = Nil

Dim read As TextFile = TextFile.Open(item)
Print read.Path = item.NativePath, read.EndOfFile
While Not read.EndOfFile
  Print "[" & read.ReadLine & "]"
Wend
Print "[" & read.ReadLine & "]", "[" & read.ReadAll & "]"
Print TextFile.Open(item.NativePath).ReadAll.Length

' A byte order mark is no text.
TextFile.Create(item).Write(Chr(&hFEFF) & "marked")
Print TextFile.Open(item).ReadLine, TextFile.Open(item).ReadAll.Length

Sub Tell(what As String)
  Print ReplaceAll(what, folder.NativePath, "FOLDER")
End Sub
Try
  read = TextFile.Open(folder.Child("missing.txt"))
Catch e As IOException
  Tell e.Message
End Try
Try
  read = TextFile.Open(folder)
  Print read.ReadLine
Catch e As IOException
  Tell e.Message
End Try
Try
  out = TextFile.Create(folder)
Catch e As IOException
  Tell e.Message
End Try
Try
  out = TextFile.Create(item)
  Print out.ReadLine
Catch e As IOException
  Tell e.Message
End Try
out.Close
Try
  out.WriteLine "too late"
Catch e As IOException
  Tell e.Message
End Try
Try
  out = New TextFile
  out.WriteLine "nowhere"
Catch e As IOException
  Print e.Message
End Try
Try
  out = TextFile.Create("/dev/full")
  out.Write "lost?"
Catch e As IOException
  Print e.Message
End Try
Dim none As FolderItem
Try
  out = TextFile.Create(none)
Catch e As NilObjectException
  Print e.Message
End Try
item.Delete
folder.Delete
