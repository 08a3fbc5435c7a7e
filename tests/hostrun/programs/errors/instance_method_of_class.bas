' wants 2 3:18: colorWithAlphaComponent belongs to instances of NSColorQVX
Print "must not run"
Print NSColorQVX.colorWithAlphaComponent(0.5)
