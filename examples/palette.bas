' A palette: a list of colours written to a file, read back, put in another order, and removed.

Sub ShowKeys(list As NSColorListQVX, ParamArray keys As String)
  Print list.name
  For Each key As String In keys
    Dim c As NSColorQVX = list.colorWithKey(key)
    If c Is Nil Then
      Print "  " + key + ": not there"
    Else
      Print "  " + key + ":", c.colorValue
    End If
  Next
End Sub

Dim folder As FolderItem = SpecialFolder.NewTemporary
Dim file As FolderItem = folder.Child("Warm.clr")

Dim palette As New NSColorListQVX
Print "An empty instance: editable", palette.isEditable, "name '" + palette.name + "', lookup", palette.colorWithKey("any") Is Nil
Print "Create:", palette.Create("Warm")
palette.setColor NSColorQVX.colorWithDeviceRGB(1, 0, 0), "red"
palette.setColor NSColorQVX.colorWithDeviceRGB(1, 0.5, 0), "orange"
palette.insertColor NSColorQVX.colorWithDeviceRGB(1, 1, 0), "yellow", 0
ShowKeys palette, "yellow", "red", "orange", "blue"
Print "Editable:", palette.isEditable
Print "Written:", palette.writeToFile(file.NativePath), file.Exists

' Read back: the colours are the same.
Dim again As New NSColorListQVX
Print "Create from file:", again.Create("Warm", file.NativePath)
ShowKeys again, "yellow", "red", "orange"

' Inserting under a key that is there moves the colour.
again.insertColor again.colorWithKey("orange"), "orange", 0
again.removeColorWithKey "red"
again.removeColorWithKey "never there"
ShowKeys again, "orange", "yellow", "red"

' An index that no list of this length has.
Try
  again.insertColor NSColorQVX.blackColor, "far", 99
Catch e As NSExceptionQVX
  Print "Refused:", e.name
End Try
Try
  again.insertColor NSColorQVX.blackColor, "far", -1
Catch e As NSExceptionQVX
  Print "Refused:", e.name
End Try
ShowKeys again, "far"

' Create on a list that is full begins anew.
Print "Create again:", again.Create("Cold")
ShowKeys again, "orange"

' A list that nobody has registered can't be loaded by name, and what was held is gone.
Print "Load:", again.Load("A list that no one has")
Print "Now empty:", again.name = ""
Print "Writing nothing:", again.writeToFile(file.NativePath)

file.Delete
folder.Delete
Print "Left behind:", folder.Exists
