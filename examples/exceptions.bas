' Every host exception that a program can meet, caught by its class.

Sub Caught(what As String, problem As RuntimeException)
  If problem IsA NSExceptionQVX Then
    Print what + ":", NSExceptionQVX(problem).name <> ""
  Else
    Print what + ":", problem.Message, problem.ErrorNumber
  End If
End Sub

Dim space As NSColorSpaceQVX = NSColorSpaceQVX.deviceRGBColorSpace
Dim color As NSColorQVX

' From the bundle itself.
Try
  color = NSColorQVX.colorWithColorSpace(Nil, 1, 1)
Catch e As NilObjectException
  Caught "Nil space", e
End Try
Try
  color = NSColorQVX.colorWithColorSpace(space, 0.5)
Catch e As OutOfBoundsException
  Caught "One component", e
End Try
Try
  Dim many(20) As Double
  color = NSColorQVX.colorWithColorSpace(space, many)
Catch e As OutOfBoundsException
  Caught "Twenty-one components", e
End Try
Try
  color = NSColorQVX.colorWithColorSpace(Nil, 0.5)
Catch e As NilObjectException
  Caught "Nil space goes before the count", e
End Try
Try
  Dim profile As MemoryBlock = NSColorSpaceQVX.sRGBColorSpace.ICCProfileData
  Dim made As New NSColorSpaceQVX(profile)
  made.initWithColorSyncProfile 0
Catch e As UnsupportedOperationException
  Caught "Filled twice", e
End Try

' From the platform, through the bundle.
Try
  Print NSColorQVX.colorWithPatternImage(New NSImageQVX(1, 1)).numberOfComponents
Catch e As NSExceptionQVX
  Caught "Components of a pattern", e
End Try
Try
  Dim h, s, v As Double
  NSColorQVX.whiteColor.getHSV h, s, v
Catch e As NSExceptionQVX
  Caught "Hue of a gray", e
End Try
Try
  Dim list As New NSColorListQVX
  If list.Create("Scratch") Then list.setColor Nil, "nothing"
Catch e As NSExceptionQVX
  Caught "No colour in a list", e
End Try

' From the host.
Try
  color = Nil
  Print color.redComponent
Catch e As NilObjectException
  Caught "Nil object", e
End Try
Try
  Dim values() As Double = NSColorQVX.redColor.Components
  Print values(4)
Catch e As OutOfBoundsException
  Caught "Past the end of an array", e
End Try
Try
  Dim block As New MemoryBlock(4)
  block.Byte(4) = 1
Catch e As OutOfBoundsException
  Caught "Past the end of a block", e
End Try
Try
  Dim anything As Variant = "text"
  Dim number As Integer = anything
Catch e As TypeMismatchException
  Caught "A Variant of another type", e
End Try
Try
  Dim anything As Variant = space
  color = NSColorQVX(anything)
Catch e As IllegalCastException
  Caught "An object of another class", e
End Try
Try
  Dim zero As Integer
  Print 1 \ zero
Catch e As DivisionByZeroException
  Caught "Division", e
End Try
Try
  Dim block As MemoryBlock = MemoryBlock.LoadFromFile("/no such file")
Catch e As IOException
  Caught "No such file", e
End Try

Try
  Dim letter As String = Chr(-1)
Catch e As InvalidArgumentException
  Caught "No such character", e
End Try
Try
  Dim huge(2000000000) As Double
Catch e As OutOfMemoryException
  Caught "Too much", e
End Try

Function Endless(n As Integer) As Integer
  Return Endless(n + 1)
End Function
Try
  Print Endless(0)
Catch e As StackOverflowException
  Caught "Calls without end", e
End Try

' A program's own, raised again and caught at last; what stands behind Finally always runs.
Try
  Try
    Raise New RuntimeException("Own", 42)
  Catch e As NilObjectException
    Print "not reached"
  Finally
    Print "Finally"
  End Try
Catch e As RuntimeException
  Caught "Own", e
End Try
