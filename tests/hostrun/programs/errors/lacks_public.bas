' wants 2 3:1: wanted a statement, found 'Public': there are no scopes
Print "must not run"
Public x As Integer
