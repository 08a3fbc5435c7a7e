' Text functions count characters, not bytes.
Dim s As String = "Grüße, Welt"
Print Len(s), LenB(s), Left(s, 5), Mid(s, 3, 2), Mid(s, 8), Right(s, 4), Mid(s, 99), Left(s, -1)
Print Uppercase(s), Lowercase("ÄÖÜ"), Trim("  x  ") + "|", LTrim("  x") + "|", RTrim("x  ") + "|"
Print InStr(s, "WELT"), InStr(4, "ababab", "ab"), InStr(s, "none"), InStr(s, "")
Print Replace("aXaXa", "x", "-"), ReplaceAll("aXaXa", "x", "-")
Print Join(Split("a,b,,c", ","), ";"), UBound(Split("", ",")), UBound(Split("abc", ""))
Print Str(1), Str(1.5), Str(1 / 3), CStr(1 / 3), Str(True), Str(1e20), Str(-0.0)
Print Format(1234.5, "#,##0.00"), Format(0.256, "0.0%"), Format(7, "000"), Format(-2.5, "-0.##"), Format(5, "+0")
Print Val("12.5abc"), Val("  -3"), Val("&hFF"), Val("none"), CDbl("1e3")
Print Hex(255), Hex(-1), Bin(5), Oct(8)
Print Chr(65), Chr(8364), Asc("A"), Asc("€"), Asc("")
Print StrComp("a", "A"), StrComp("a", "A", 0) <> 0, "straße" = "STRASSE"
Print Abs(-5), Abs(-5.5), Min(3, 1, 2), Max(1, 2.5), Min(4, 9), Round(2.5), Round(-2.5), Floor(-1.5), Ceil(1.2), Sqrt(16), Sign(-3), Truncate(-1.7)
Dim wide As String = ConvertEncoding(s, Encodings.UTF16)
Print Encoding(wide) = Encodings.UTF16, LenB(wide), Len(wide), wide = s, wide + "!"
Print DefineEncoding(Chr(65), Encodings.ASCII), Encoding("x") = Encodings.UTF8
Dim arguments() As String = Arguments
Print UBound(arguments), arguments(0), arguments(1)
