package ifneeded tarqclient 1.0 [list source [file join $dir tarqclient.tcl]]
