' wants 2 3:7: wanted &h, &b, &o or &c
Print "must not run"
Print &z12
