' wants 2 3:1: wanted a statement, found '#': all of a program is compiled; write If
Print "must not run"
#If TargetLinux Then
