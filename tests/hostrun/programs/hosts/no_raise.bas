' wants 0 
' options --without RuntimeRaiseException
' What can't be raised is not raised: the neutral value comes back.
Print NSColorQVX.colorWithColorSpace(Nil, 1) Is Nil
Dim w As Double = 3
NSColorQVX.redColor.getWhite w
Print w
