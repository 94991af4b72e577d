# tarqclient: a pure-Tcl client of the tarqtool command server.
#
#   package require tarqclient        (or: source tarqclient.tcl)
#   set chan [tarqclient::connect /path/to/port/file]
#   puts [tarqclient::send $chan beep]          ;# -> Beep you back...
#   tarqclient::close $chan
#
# A request is a 4-byte big-endian length and the script's UTF-8 bytes; a reply is a 20-byte
# header of five big-endian integers (0xC0CAC01A, length, 12, 14, length) and the text.
#
# connect greets the server with "auth", and the token when the port file has one. A tqserver
# then opens a session: every script ends with an end reply, a failed script is answered with
# its Tcl error text (which send raises as a Tcl error), and scripts over 1023 bytes are sent
# in base64 pieces ("chunk add", then "chunk eval"). A server without sessions answers the
# greeting "Bad command"; send then returns the first reply, fails with "no reply" when a
# script sends none, raises "Bad command" for a failed script and refuses long scripts.

package require Tcl 8.6
package provide tarqclient 1.2

namespace eval ::tarqclient {
    namespace export connect send receive close
    variable ready
    variable session   ;# per channel: "chunk" in a session that takes pieces, "" without
    variable maxScript 1023
    variable piece 750
}

# The port and token (possibly "") from a port file of "owner = N", "port = N" and
# "token = T" lines; an error when "owner" or "port" is missing.
proc ::tarqclient::readPortFile {path} {
    set file [open $path r]
    set text [read $file]
    ::close $file
    foreach line [split $text \n] {
        if {[scan $line "%20s = %60s" key value] == 2} {
            set found($key) $value
        }
    }
    if {![info exists found(port)] || ![info exists found(owner)]} {
        error "tarqclient: $path names no port"
    }
    if {[scan $found(port) %d port] != 1} {
        error "tarqclient: $path names no port"
    }
    if {![info exists found(token)]} {
        set found(token) ""
    }
    return [list $port $found(token)]
}

# The port named by a port file.
proc ::tarqclient::portFromFile {path} {
    return [lindex [readPortFile $path] 0]
}

# Connects to the server named by the port file and opens a session when the server offers
# one; returns the channel. Errors: "tarqclient: the server refused the token".
proc ::tarqclient::connect {portFile {waitMs 5000}} {
    variable session
    lassign [readPortFile $portFile] port token
    set chan [socket 127.0.0.1 $port]
    fconfigure $chan -translation binary -buffering full -blocking 1
    try {
        writeScript $chan [string trimright "auth $token"]
        flush $chan
        set greeting [receive $chan $waitMs]
        if {[string match "session*" $greeting]} {
            if {[receive $chan $waitMs] ne "__TCS__END__"} {
                error "tarqclient: the server did not finish the greeting"
            }
            set session($chan) [expr {"chunk" in $greeting ? "chunk" : "session"}]
        } elseif {$greeting eq "Bad command" && $token ne ""} {
            error "tarqclient: the server refused the token"
        } else {
            set session($chan) ""
        }
    } on error {message options} {
        ::close $chan
        return -options $options $message
    }
    return $chan
}

proc ::tarqclient::writeScript {chan bytes} {
    puts -nonewline $chan [binary format I [string length $bytes]]$bytes
}

# Sends script and returns its reply: in a session, the texts of all its replies joined by
# newlines ("" when it sent none); without one, the text of its first reply. A failed script
# raises a Tcl error with the server's error text. Waits up to waitMs milliseconds for each
# reply (default 15000 in a session, 2000 without).
proc ::tarqclient::send {chan script {waitMs ""}} {
    variable session
    variable maxScript
    variable piece
    set mode [expr {[info exists session($chan)] ? $session($chan) : ""}]
    if {$waitMs eq ""} {
        set waitMs [expr {$mode eq "" ? 2000 : 15000}]
    }
    set bytes [encoding convertto utf-8 $script]
    set length [string length $bytes]
    if {$length > $maxScript && $mode ne "chunk"} {
        error "tarqclient: the script is $length bytes; the server takes at most $maxScript\
               in one script"
    }
    if {$length > $maxScript} {
        for {set from 0} {$from < $length} {incr from $piece} {
            set part [string range $bytes $from [expr {$from + $piece - 1}]]
            writeScript $chan "chunk add [binary encode base64 $part]"
        }
        writeScript $chan "chunk eval"
    } else {
        writeScript $chan $bytes
    }
    flush $chan
    if {$mode eq ""} {
        set text [receive $chan $waitMs]
        if {$text eq "Bad command"} {
            return -code error -errorcode {TARQCLIENT SCRIPT} $text
        }
        return $text
    }
    set texts {}
    set failure ""
    while {[set text [receive $chan $waitMs]] ne "__TCS__END__"} {
        if {[string match "__TCS__ERROR__ *" $text]} {
            set failure [string range $text 15 end]
        } elseif {!($failure ne "" && $text eq "Bad command")} {
            lappend texts $text
        }
    }
    if {$failure ne ""} {
        return -code error -errorcode {TARQCLIENT SCRIPT} $failure
    }
    return [join $texts \n]
}

# The text of the next reply. Errors: "tarqclient: no reply within N ms",
# "tarqclient: connection closed" and "tarqclient: not a reply header".
proc ::tarqclient::receive {chan {waitMs 2000}} {
    set header [readBytes $chan 20 $waitMs]
    binary scan $header IIIII magic length reserved code value
    if {($magic & 0xFFFFFFFF) != 0xC0CAC01A} {
        error "tarqclient: not a reply header"
    }
    return [encoding convertfrom utf-8 [readBytes $chan $length $waitMs]]
}

# Ends this connection with "disconnect" and closes the channel. Not "quit": in the viewer
# that ends the whole program, while "disconnect" ends only the connection on every server.
proc ::tarqclient::close {chan} {
    variable session
    unset -nocomplain session($chan)
    catch {
        writeScript $chan disconnect
        flush $chan
    }
    ::close $chan
}

# Reads exactly count bytes, waiting up to waitMs milliseconds in all. A time-out before the
# first byte leaves the stream as it was.
proc ::tarqclient::readBytes {chan count waitMs} {
    variable ready
    set data ""
    set deadline [expr {[clock milliseconds] + $waitMs}]
    fconfigure $chan -blocking 0
    try {
        while {[string length $data] < $count} {
            append data [read $chan [expr {$count - [string length $data]}]]
            if {[string length $data] >= $count} {
                break
            }
            if {[eof $chan]} {
                error "tarqclient: connection closed"
            }
            set left [expr {$deadline - [clock milliseconds]}]
            if {$left <= 0} {
                error "tarqclient: no reply within $waitMs ms"
            }
            set ready($chan) 0
            fileevent $chan readable [list set ::tarqclient::ready($chan) 1]
            set timer [after $left [list set ::tarqclient::ready($chan) 2]]
            vwait ::tarqclient::ready($chan)
            after cancel $timer
            fileevent $chan readable {}
        }
    } finally {
        fconfigure $chan -blocking 1
    }
    return $data
}
