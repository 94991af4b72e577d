# tarqclient: a pure-Tcl client of the tarqtool command server.
#
#   package require tarqclient        (or: source tarqclient.tcl)
#   set chan [tarqclient::connect /path/to/port/file]
#   puts [tarqclient::send $chan beep]          ;# -> Beep you back...
#   tarqclient::close $chan
#
# A request is a 4-byte big-endian length and the script's UTF-8 bytes; a reply is a 20-byte
# header of five big-endian integers (0xC0CAC01A, length, 12, 14, length) and the text.
# A script whose commands send nothing gets no reply: send then fails with "no reply"
# after its wait, and the connection stays usable.

package require Tcl 8.6
package provide tarqclient 1.0

namespace eval ::tarqclient {
    namespace export connect send receive close
    variable ready
}

# The port from a port file of "owner = N" and "port = N" lines; an error when either
# line is missing.
proc ::tarqclient::portFromFile {path} {
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
    return $port
}

# Connects to the server named by the port file; returns the channel.
proc ::tarqclient::connect {portFile} {
    set chan [socket 127.0.0.1 [portFromFile $portFile]]
    fconfigure $chan -translation binary -buffering none -blocking 1
    return $chan
}

# Sends script and returns the text of its first reply, waiting up to waitMs milliseconds.
proc ::tarqclient::send {chan script {waitMs 2000}} {
    set bytes [encoding convertto utf-8 $script]
    puts -nonewline $chan [binary format I [string length $bytes]]$bytes
    flush $chan
    return [receive $chan $waitMs]
}

# The text of the next reply. Errors: "tarqclient: no reply within N ms" and
# "tarqclient: connection closed".
proc ::tarqclient::receive {chan {waitMs 2000}} {
    set header [readBytes $chan 20 $waitMs]
    binary scan $header IIIII magic length reserved code value
    if {($magic & 0xFFFFFFFF) != 0xC0CAC01A} {
        error "tarqclient: not a reply header"
    }
    return [encoding convertfrom utf-8 [readBytes $chan $length $waitMs]]
}

# Sends "quit" and closes the channel.
proc ::tarqclient::close {chan} {
    catch {
        puts -nonewline $chan [binary format I 4]quit
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
