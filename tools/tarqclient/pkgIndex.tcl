package ifneeded tarqclient 1.2 [list source [file join $dir tarqclient.tcl]]
