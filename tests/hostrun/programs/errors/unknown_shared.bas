' wants 2 3:18: wanted a shared method or a constant of NSColorQVX, found colorWithMagic
Print "must not run"
Print NSColorQVX.colorWithMagic(1)
