' wants 2 3:23: no form of ColorSpaceWithICCProfileData takes (Integer)
Print "must not run"
Print NSColorSpaceQVX.ColorSpaceWithICCProfileData(1)
