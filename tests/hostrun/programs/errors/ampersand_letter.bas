' wants 2 3:12: wanted &h, &b, &o or &c and digits, found '&n'; to join texts, write a blank behind &
Dim name As String
Print name &name
