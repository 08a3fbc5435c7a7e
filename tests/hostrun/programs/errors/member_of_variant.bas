' wants 2 4:9: wanted an object of a known class, found a Variant; write Class(value).redComponent
Print "must not run"
Dim v As Variant
Print v.redComponent
