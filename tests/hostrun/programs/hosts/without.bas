' wants 0 
' options --without REALLockObject
' options --without REALGetStringCFString
' options --without REALGetStringCFString --host-version 2011.0
' options --without PluginGetStringData --without REALGetStringCFString
' options --without REALBuildStringWithEncoding
' options --without PluginDisposeStringData
' options --without REALGetRBVersion
' options --without REALGetStringEncoding
' options --without REALConvertString
' options --without RegisterPluginVersion
' options --without RegisterPluginVersion --host-version 2011.0
' Services whose lack a host program does not see.
Dim list As New NSColorListQVX
Print list.Create("Grün")
Print list.name
list.setColor NSColorQVX.redColor, "key"
Print list.colorWithKey("key").redComponent
