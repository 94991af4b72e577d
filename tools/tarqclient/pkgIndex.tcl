package ifneeded tarqclient 1.1 [list source [file join $dir tarqclient.tcl]]
