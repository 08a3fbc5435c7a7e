' wants 0 
' options --without RuntimeArrayCreateSingleDimBoundedArray
' No arrays to give.
Dim values() As Double = NSColorQVX.redColor.Components
Print values Is Nil
Dim spaces() As NSColorSpaceQVX = NSColorSpaceQVX.availableColorSpacesWithModel(1)
Print spaces Is Nil
