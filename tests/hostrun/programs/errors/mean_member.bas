' wants 2 3:9: wanted a method or a property of NSColorQVX, found redComponnet, which it does not have; did you mean redComponent?
Dim c As NSColorQVX
Print c.redComponnet
