' wants 0 
' options --without RuntimeArrayDirectGetInsertProc
' Arrays that stay empty.
Print UBound(NSColorQVX.redColor.Components), UBound(NSColorSpaceQVX.availableColorSpacesWithModel(1))
