' wants 2 3:29: blueColor belongs to the class: write NSColorQVX.blueColor
Print "must not run"
Print NSColorQVX.blackColor.blueColor
