' wants 2 3:18: colorWithDeviceRGB wants 3 to 4 arguments, found 2: colorWithDeviceRGB(red as Double
Print "must not run"
Print NSColorQVX.colorWithDeviceRGB(1, 2)
