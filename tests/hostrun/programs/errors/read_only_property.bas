' wants 2 3:23: wanted something to assign to, found redComponent, which can only be read
Print "must not run"
NSColorQVX.blackColor.redComponent = 1
