' wants 2 3:18: wanted a shared method or a constant of NSColorQVX, found orangColor, which it does not have; did you mean orangeColor
Print "must not run"
Print NSColorQVX.orangColor
