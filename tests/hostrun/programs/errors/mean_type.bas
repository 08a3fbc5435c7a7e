' wants 2 3:10: wanted a type, found Integr, which is none that this host knows; did you mean Integer?
Print "must not run"
Dim i As Integr
