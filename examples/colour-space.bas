' Colour spaces: predefined, by name, from an ICC profile in a file and from its bytes.

Sub Show(space As NSColorSpaceQVX)
  If space Is Nil Then
    Print "  Nil"
  Else
    Print "  " + space.localizedName + ", model", space.colorSpaceModel, "with", space.numberOfColorComponents, "components"
  End If
End Sub

Print "Predefined"
Show NSColorSpaceQVX.genericRGBColorSpace
Show NSColorSpaceQVX.genericGrayColorSpace
Show NSColorSpaceQVX.genericCMYKColorSpace
Show NSColorSpaceQVX.deviceRGBColorSpace
Show NSColorSpaceQVX.deviceGrayColorSpace
Show NSColorSpaceQVX.deviceCMYKColorSpace
Show NSColorSpaceQVX.sRGBColorSpace
Show NSColorSpaceQVX.adobeRGB1998ColorSpace
Show NSColorSpaceQVX.genericGamma22GrayColorSpace

Print "By name"
Show NSColorSpaceQVX.colorSpaceForColorSpaceName(NSColorSpaceQVX.NSDeviceRGBColorSpace)
Show NSColorSpaceQVX.colorSpaceForColorSpaceName("no such name")

' A shared space is one object while somebody holds it.
Dim first As NSColorSpaceQVX = NSColorSpaceQVX.genericRGBColorSpace
Dim second As NSColorSpaceQVX = NSColorSpaceQVX.genericRGBColorSpace
Print "One object:", first Is second

' The profile of sRGB: a file, its bytes, and two spaces made of them.
Dim profile As MemoryBlock = NSColorSpaceQVX.sRGBColorSpace.ICCProfileData
Print "Profile:", profile.Size > 128, profile.StringValue(36, 4)
Dim folder As FolderItem = SpecialFolder.NewTemporary
Dim file As FolderItem = folder.Child("screen.icc")
profile.SaveToFile file

Dim fromFile As NSColorSpaceQVX = NSColorSpaceQVX.ColorSpaceWithICCProfileData(file)
Dim fromBytes As NSColorSpaceQVX = NSColorSpaceQVX.ColorSpaceWithICCProfileData(MemoryBlock.LoadFromFile(file))
Dim made As New NSColorSpaceQVX(profile)
Print "From a file, from bytes, by New"
Show fromFile
Show fromBytes
Show made
Print "Same names:", fromFile.localizedName = fromBytes.localizedName, fromBytes.localizedName = made.localizedName
Print "Same profiles:", fromFile.ICCProfileData.StringValue(0, 128) = fromBytes.ICCProfileData.StringValue(0, 128)

' The same numbers in both spaces are the same colour.
Dim a As NSColorQVX = NSColorQVX.colorWithColorSpace(fromFile, 0.25, 0.5, 0.75, 1)
Dim b As NSColorQVX = NSColorQVX.colorWithColorSpace(fromBytes, 0.25, 0.5, 0.75, 1)
Print "Colours:", a.redComponent = b.redComponent, a.greenComponent = b.greenComponent, a.blueComponent = b.blueComponent
Print "Value:", a.colorValue = b.colorValue

' What is no profile gives Nil, or an instance that stays empty.
Print "Not there:"
Show NSColorSpaceQVX.ColorSpaceWithICCProfileData(folder.Child("missing.icc"))
Print "A folder:"
Show NSColorSpaceQVX.ColorSpaceWithICCProfileData(folder)
Print "No bytes:"
Show NSColorSpaceQVX.ColorSpaceWithICCProfileData(New MemoryBlock(0))
Print "Other bytes:"
Show NSColorSpaceQVX.ColorSpaceWithICCProfileData(New MemoryBlock("this is no profile at all"))
Dim cut As New MemoryBlock(profile.StringValue(0, 200))
Print "Half a profile:"
Show NSColorSpaceQVX.ColorSpaceWithICCProfileData(cut)
Print "No handle:"
Show NSColorSpaceQVX.ColorSpaceWithColorSyncProfile(0)
Show NSColorSpaceQVX.ColorSpaceWithCGColorSpace(0)
Print "An empty instance:", (New NSColorSpaceQVX).colorSpaceModel = NSColorSpaceQVX.NSGrayColorSpaceModel

' Through a handle.
Dim other As New NSColorSpaceQVX
other.initWithCGColorSpace first.CGColorSpaceHandle
Print "Through a handle:", other.localizedName = first.localizedName

Print "Available RGB spaces:", NSColorSpaceQVX.availableColorSpacesWithModel(NSColorSpaceQVX.NSRGBColorSpaceModel).Count > 0
Print "Available pattern spaces:", NSColorSpaceQVX.availableColorSpacesWithModel(NSColorSpaceQVX.NSPatternColorSpaceModel).Count

file.Delete
folder.Delete
