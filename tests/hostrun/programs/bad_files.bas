' Files that are not what they are taken for: the documented result, and nothing lost.
Dim folder As FolderItem = SpecialFolder.NewTemporary
Dim file As FolderItem = folder.Child("profile.icc")

Sub Profile(what As String, file As FolderItem)
  Print what + ":", NSColorSpaceQVX.ColorSpaceWithICCProfileData(file) Is Nil
End Sub

Dim empty As New MemoryBlock(0)
empty.SaveToFile file
Profile "an empty profile", file

Dim noise As New MemoryBlock(4096)
Dim seed As Integer = 12345
For i As Integer = 0 To noise.Size - 1
  seed = (seed * 1103 + 12345) Mod 65536
  noise.Byte(i) = seed Mod 256
Next
noise.SaveToFile file
Profile "random bytes", file

Dim good As MemoryBlock = NSColorSpaceQVX.sRGBColorSpace.ICCProfileData
Dim cut As New MemoryBlock(good.StringValue(0, good.Size - 1))
cut.SaveToFile file
Profile "one byte short", file

' A profile may be followed by anything, but 50 MiB of zeros are no profile.
Dim huge As New MemoryBlock(50 * 1024 * 1024)
huge.SaveToFile file
Profile "50 MiB of nothing", file
Profile "a folder", folder
file.Delete

Dim listFile As FolderItem = folder.Child("colours.clr")
noise.SaveToFile listFile
Dim list As New NSColorListQVX
Print "a list of random bytes:", list.Create("Noise", listFile.NativePath)
Print "it is empty:", list.name = "", list.colorWithKey("a") Is Nil
Print "a folder as a list:", list.Create("Folder", folder.NativePath)
listFile.Delete
folder.Delete
