' wants 2 4:9: NSRGBColorSpaceModel belongs to the class
Print "must not run"
Dim s As NSColorSpaceQVX
Print s.NSRGBColorSpaceModel
