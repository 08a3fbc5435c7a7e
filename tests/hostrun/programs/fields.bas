' Texts: joined, measured, cut into fields, and numbers as text.
Dim name As String = "grün"
Print "a" & "b" & name, "a"&"b", Str(1) & "|" & Str(2)
name &= "lich"
Print name, name.Length, name.Count, "".Length, LenB(name)
Dim v As Variant = "any"
Print v & "thing"

Print NthField("a,b,,d", ",", 1), NthField("a,b,,d", ",", 4), "[" & NthField("a,b,,d", ",", 3) & "]"
Print "[" & NthField("a,b", ",", 3) & "]", "[" & NthField("a,b", ",", 0) & "]", NthField("abc", "", 2)
Print CountFields("a,b,,d", ","), CountFields("", ","), CountFields("a", ","), CountFields("a - b - c", " - ")
For i As Integer = 1 To CountFields(name, "l")
  Print NthField(name, "l", i)
Next

Print 0.1 + 0.2, CStr(0.1 + 0.2), Format(0.1 + 0.2, ""), Format(1 / 3, "0.0000000000")
Dim far As Int64 = 9223372036854775807
Print far, CStr(far), Str(far), Format(far, "#,##0"), Format(far, ""), Format(-far, "0")
Print 2147483647, CStr(2147483647), Format(2147483647, "#,##0"), Format(12, "0%")
