' wants 0 
' options --without RuntimeArrayDirectGetGetProc
' options --host-version 2016.0
' Elements that can't be read count as 0.
Dim c As NSColorQVX = NSColorQVX.colorWithColorSpace(NSColorSpaceQVX.deviceRGBColorSpace, 1, 0.5, 0.25, 1)
Print c.redComponent, c.greenComponent, c.blueComponent, c.alphaComponent
