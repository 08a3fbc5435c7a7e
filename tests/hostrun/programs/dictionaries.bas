' A Dictionary: values by keys of any type.
Dim d As New Dictionary
Print d.Count, d.HasKey("a"), d.Keys, d.Values
d.Value("red") = NSColorQVX.redColor
d.Value("share") = 0.5
d.Value(3) = "three"
d.Value(&cFF0000) = True
d.Value("") = Nil
Print d.Count, d.Keys
Dim red As NSColorQVX = d.Value("RED")
Print red.redComponent, d.Value("share"), d.Value(3.0), d.Value(&cFF0000), d.Value("") Is Nil

' Keys are the same where "=" says so: letters without regard to case, numbers by value.
d.Value("SHARE") = 0.25
d.Value("share") += 1
Print d.Count, d.Value("share")
Print d.HasKey("Share"), d.HasKey(4), d.HasKey("3"), d.HasKey(True), d.HasKey(red)
Dim far As Int64 = 9007199254740993
d.Value(far) = "exact"
Print d.HasKey(9007199254740992), d.HasKey(far)
d.Value(0.0 / 0) = "no number"
Print d.Value(0.0 / 0)

Print d.Lookup("share", 7), d.Lookup("missing", 7), d.Lookup("missing", Nil) Is Nil
Try
  Print d.Value("missing")
Catch e As KeyNotFoundException
  Print e.Message
End Try
Try
  d.Remove 99
Catch e As KeyNotFoundException
  Print e.Message
End Try

d.Remove "red"
d.Remove 3
For Each key As Variant In d.Keys
  Print key, d.Value(key)
Next
Print d.Keys(0), d.Values(0)
d.RemoveAll
Print d.Count

' The keys are a list of their own: it stays as it was.
d.Value("a") = 1
For Each key As Variant In d.Keys
  d.Value(key + "a") = 2
Next
Print d.Count

' A Dictionary holds objects, itself an object.
Dim inner As New Dictionary
inner.Value("x") = Array(1, 2)
d.Value("inner") = inner
Dim again As Dictionary = d.Value("inner")
Dim list() As Integer = again.Value("x")
Print list(1), again Is inner
