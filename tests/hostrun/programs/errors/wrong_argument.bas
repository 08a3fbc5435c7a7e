' wants 2 3:40: argument 2 (green) of colorWithDeviceRGB wants Double, found String
Print "must not run"
Print NSColorQVX.colorWithDeviceRGB(1, "a", 3)
