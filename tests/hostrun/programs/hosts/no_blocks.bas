' wants 0 
' options --without newMemoryBlock
' options --without memoryBlockGetPtr
' A profile can't be handed out.
Try
  Dim profile As MemoryBlock = NSColorSpaceQVX.sRGBColorSpace.ICCProfileData
  Print "not reached"
Catch e As OutOfMemoryException
  Print Left(e.Message, 38)
End Try
