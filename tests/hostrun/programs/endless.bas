' wants 1 uncaught StackOverflowException: Too many calls inside of calls.
Sub Endless
  Endless
End Sub
Endless
