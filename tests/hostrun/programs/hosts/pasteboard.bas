' options --host-version 2015.0
' Colours on the platform's general pasteboard.
Pasteboard.DeclareColor
Print Pasteboard.Types
Dim c As NSColorQVX = NSColorQVX.colorWithDeviceRGB(0.25, 0.5, 0.75)
c.writeToPasteboard
Dim read As NSColorQVX = NSColorQVX.colorFromPasteboard
Print read.redComponent, read.greenComponent, read.blueComponent

' A declaration empties it; what was not declared is not taken.
Pasteboard.DeclareTypes "NSStringPboardType"
c.writeToPasteboard
Print Pasteboard.Types, NSColorQVX.colorFromPasteboard Is Nil
