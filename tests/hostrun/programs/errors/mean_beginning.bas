' wants 2 2:18: wanted a shared method or a constant of NSColorQVX, found red, which it does not have; did you mean redColor?
Print NSColorQVX.red
