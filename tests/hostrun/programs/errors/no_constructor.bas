' wants 2 3:7: no constructor of NSColorSpaceQVX takes (String)
Print "must not run"
Print New NSColorSpaceQVX("x")
