' wants 0 
' options --without PluginNewInstance
' Without instances there are no colours from factories, and nothing to raise.
Print NSColorQVX.redColor Is Nil
Print NSColorQVX.colorWithColorSpace(Nil, 1) Is Nil
