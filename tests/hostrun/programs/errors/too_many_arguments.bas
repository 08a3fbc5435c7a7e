' wants 2 3:18: blackColor wants no arguments, found 1
Print "must not run"
Print NSColorQVX.blackColor(1)
