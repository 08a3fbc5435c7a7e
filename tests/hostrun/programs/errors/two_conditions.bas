' wants 2 4:6: wanted one condition, at the top or at the bottom
Print "must not run"
Do While True
Loop Until False
