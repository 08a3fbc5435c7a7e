Print "plain", NSColorQVX.colorWithDeviceRGB(1, 0.5, 0.25, 0.5)
Print "grey", NSColorQVX.colorWithCalibratedWhite(0.25)
Print "by name", NSColorQVX.controlColor
Print "in a profile", NSColorQVX.colorWithSRGB(0.1, 0.2, 0.3)
Print "of the host", &c102030
Print "pattern", NSColorQVX.colorWithPatternImage(New NSImageQVX(2, 2, &cFF0000))
Print "ink", NSColorQVX.colorWithDeviceCMYK(0.1, 0.2, 0.3, 0.4)
