' wants 2 3:1: wanted a statement, found 'Module': modules can't be declared here
Print "must not run"
Module Thing
End Module
