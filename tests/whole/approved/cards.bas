' A card of each kind: opaque, seen through, in other spaces, known by name, not to be shown, with names that don't fit.
Print "opaque", NSColorQVX.colorWithDeviceRGB(0.25, 0.5, 0.75)
Print "half transparent", NSColorQVX.colorWithSRGB(1, 0.25, 0, 0.5)
Print "white", NSColorQVX.whiteColor
Print "ink", NSColorQVX.colorWithDeviceCMYK(0.1, 0.2, 0.3, 0.4)
Print "known by name", NSColorQVX.controlColor
Print "a host's colour", &c112233
Print "a tab" + Chr(9) + "and a <sign>", NSColorQVX.colorWithDeviceHSV(0.6, 0.5, 0.9)
Print "a name that is far too long for the card that it stands on", &cFFCC00
Print "a pattern", NSColorQVX.colorWithPatternImage(New NSImageQVX(2, 2, &cFF0000))
