' wants 2 3:16: wanted Red, Green, Blue, Alpha, Hue, Saturation or Value of a Color
Print "must not run"
Print &c010203.Cyan
