' Memory blocks and files.
Dim block As New MemoryBlock(16)
block.Byte(0) = 65
block.Byte(1) = 300
block.UInt16Value(2) = 258
block.Int32Value(4) = -2
block.DoubleValue(8) = 0.5
Print block.Size, block.Byte(0), block.Byte(1), block.Byte(2), block.Byte(3), block.Int32Value(4), block.DoubleValue(8)
block.Size = 4
Print block.Size
block.SingleValue(0) = 1.5
Print block.SingleValue(0)
block.StringValue(0, 4) = "abcdef"
Print block.StringValue(0, 4)
block.StringValue(0, 4) = "x"
Print block.Byte(0), block.Byte(1)

Dim folder As FolderItem = SpecialFolder.NewTemporary
Dim file As FolderItem = folder.Child("data.bin")
Print file.Name, file.Exists, file.Parent.Name = folder.Name, folder.IsFolder, file.Length
Dim text As New MemoryBlock("hello")
text.SaveToFile file
Print file.Exists, file.Length, file.IsFolder
Dim again As MemoryBlock = MemoryBlock.LoadFromFile(file.NativePath)
Print again.StringValue(0, again.Size)
file.Delete
Print file.Exists
Try
  file.Delete
Catch e As IOException
  Print "IOException"
End Try
Try
  again = MemoryBlock.LoadFromFile(folder)
Catch e As IOException
  Print "IOException"
End Try
Dim inner As FolderItem = folder.Child("inner")
inner.CreateFolder
Print inner.IsFolder
inner.Remove
folder.Delete
Print folder.Exists
Dim root As FolderItem = GetFolderItem("/")
Print root.Parent Is Nil, root.NativePath
Print (New FolderItem("/a/b/../c/")).NativePath
Try
  Dim none As FolderItem = GetFolderItem("")
Catch e As InvalidArgumentException
  Print e.Message
End Try
