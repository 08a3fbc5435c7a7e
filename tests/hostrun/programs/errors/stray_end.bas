' wants 2 3:1: wanted a statement, or the beginning of the block that this ends
Print "must not run"
Next
