Dim a, b = 5
