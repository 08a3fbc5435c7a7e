' wants 2 3:1: wanted a statement, found 'Structure': structures can't be declared here
Print "must not run"
Structure Thing
End Structure
