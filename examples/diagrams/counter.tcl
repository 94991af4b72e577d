# Builds a diagram from simulation data and exports it, without a window:
#
#   tqdiagram script counter.tcl OUTPUT_FOLDER
#
# The "simulation" is a 4-bit counter with an enable and a synchronous clear, computed here
# cycle by cycle; a real flow would read the values from its simulator's log instead.
set folder [expr {$argc > 0 ? [lindex $argv 0] : "."}]

diagram new -title "4-bit counter with clear" -unit ns -span {0 400}
signal add clk -period 20 -phase 10 -group Inputs
signal add enable -group Inputs
signal add clear -group Inputs
signal add count -width 4 -radix hex -notation verilog -group Outputs
signal add carry -group Outputs

set count 0
for {set cycle 0} {$cycle < 20} {incr cycle} {
    set t [expr {$cycle * 20 + 10}]
    set enable [expr {$cycle >= 2 && $cycle != 9}]
    set clear [expr {$cycle == 15}]
    signal set enable [expr {$t - 5}] $enable
    signal set clear [expr {$t - 5}] $clear
    if {$clear} {
        set count 0
    } elseif {$enable} {
        set count [expr {($count + 1) % 16}]
    }
    signal set count [expr {$t + 3}] [format %X $count]
    signal set carry [expr {$t + 3}] [expr {$count == 15}]
}
signal set count 0 x
signal set carry 0 x
marker add 305ns "clear"
arrow add clk 310 count 313 "t<sub>CQ</sub>"

foreach format {png pdf svg eps mif} {
    diagram export [file join $folder counter.$format]
}
diagram save [file join $folder counter.tqd]
puts "[llength [signal list]] signals, [dict get [diagram info] changes] changes"
