' wants 2 3:29: wanted a method or a property of NSColorQVX, found shine
Print "must not run"
Print NSColorQVX.blackColor.shine
