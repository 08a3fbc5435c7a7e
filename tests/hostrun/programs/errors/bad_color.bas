' wants 2 3:7: wanted &cRRGGBB
Print "must not run"
Print &cFFF
