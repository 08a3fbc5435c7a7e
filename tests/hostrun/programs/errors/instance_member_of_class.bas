' wants 2 3:18: redComponent belongs to instances of NSColorQVX
Print "must not run"
Print NSColorQVX.redComponent
