' wants 2 4:3: wanted Continue inside of a loop of that kind, found it outside
Print "must not run"
While True
  Continue For
Wend
