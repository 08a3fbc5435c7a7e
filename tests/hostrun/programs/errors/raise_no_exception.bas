' wants 2 3:7: Raise wants RuntimeException, found NSColorQVX
Print "must not run"
Raise New NSColorQVX
