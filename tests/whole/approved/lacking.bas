' Statements of other dialects, each of them refused with what to write instead.
Class Thing
  Dim x As Integer
End Class
Interface Thing
  Sub Work()
End Interface
Property Width As Integer
  Get
  End Get
End Property
Event Changed(n As Integer)
End Event
Delegate Sub Work(n As Integer)
Module Tools
  Sub Work()
  End Sub
End Module
Namespace Tools
End Namespace
Structure Pair
  first As Integer
End Structure
Type Pair
End Type
Public x As Integer
Private x As Integer
Protected x As Integer
Friend x As Integer
Global x As Integer
Shared x As Integer
Goto there
GoSub there
On Error
Resume
Resume Next
Throw e
With e
  Print 1
End With
Using e
End Using
Imports Tools
Inherits Thing
Declare Sub Work Lib
Option Strict
Let x = 5
Stop
Line Input
Data One
Read one
Repeat
Print 1 +
' As names these are none of them.
Dim line, data, read, type, let, stop, on, property As Integer
line = 1
data = 2
stop = 3
Print line, data, read, type, let, stop, on, property
