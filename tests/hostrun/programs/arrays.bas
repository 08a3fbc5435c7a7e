' Arrays: one dimension, growing, of any type.
Dim a() As Integer
Print UBound(a), a.Count
a.Append 3
a.Append 1
a.Add 2
a.Insert 0, 9
Print a.Count, a(0), a(3), a.LastIndex
a.Remove 0
a.Sort
For Each n As Integer In a
  Print n
Next
Print a.IndexOf(2), a.IndexOf(7), a.Pop, a.Count
a.RemoveAll
Print UBound(a)

Dim fixed(2) As String
fixed(1) = "middle"
Print Join(fixed, "|"), UBound(fixed)
ReDim fixed(0)
Print UBound(fixed)

Dim d() As Double = Array(1, 2.5, 3)
d(0) += 0.5
Print d(0), d(1), d.IndexOf(2.5)
Dim mixed() As Variant = Array(1, "two", &c000003)
Print mixed(0), mixed(1), mixed(2)
Dim colors() As NSColorQVX
colors.Append NSColorQVX.redColor
colors.Append Nil
Print colors(0).colorValue, colors(1) Is Nil, colors.IndexOf(Nil)

' An array is an object: both names mean the same one.
Dim other() As Double = d
other(1) = 99
Print d(1), other Is d

' The components of a colour, as a whole and by index.
Dim parts() As Double = NSColorQVX.redColor.Components
Print UBound(parts), parts(0), NSColorQVX.redColor.Components(3)

Sub Fill(numbers() As Integer)
  numbers.Append 1
End Sub
Fill a
Fill a
Print a.Count

' An array may hold itself: what lies deep is shown by its length alone.
Dim ring() As Variant
ring.Append 1
ring.Append ring
Print ring
ring.RemoveAll

' A Variant says what kind of array it holds.
Dim texts As Variant = Array("a", "b")
Try
  Dim numbers() As Integer = texts
Catch e As TypeMismatchException
  Print e.Message
End Try
