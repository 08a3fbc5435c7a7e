' wants 0 
' options --without REALFSRefFromFolderItem
' No file can be found.
Dim folder As FolderItem = SpecialFolder.NewTemporary
Dim file As FolderItem = folder.Child("profile.icc")
NSColorSpaceQVX.sRGBColorSpace.ICCProfileData.SaveToFile file
Print NSColorSpaceQVX.ColorSpaceWithICCProfileData(file) Is Nil
file.Delete
folder.Delete
