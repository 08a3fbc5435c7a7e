' wants 0 
' options --without REALLockObject
' A known object comes back without a reference of its own: the host takes one.
Dim a As NSColorQVX = NSColorQVX.controlColor
Dim b As NSColorQVX = NSColorQVX.controlColor
Print a Is b
a = Nil
Print b.colorNameComponent
