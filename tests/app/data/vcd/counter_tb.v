// A small design dumped with every kind of variable the reader keeps; the testbench prints
// each variable at times between the changes, as "@TIME NAME BINARY", for the reader's test.
`timescale 1ns / 1ns

module counter (input clk, input rst, input oe, output reg [7:0] count, output [7:0] bus);
    reg carry;
    assign bus = oe ? count : 8'bz;
    always @(posedge clk)
        if (rst) begin
            count <= 0;
            carry <= 0;
        end else begin
            {carry, count} <= count + 8'd37;
        end
endmodule

module tb;
    reg clk = 0;
    reg rst;
    reg oe = 0;
    wire [7:0] count;
    wire [7:0] bus;
    reg [99:0] wide;
    reg [3:0] nibble = 4'bx1z0;
    integer steps = -5;
    event tick;

    counter dut (.clk(clk), .rst(rst), .oe(oe), .count(count), .bus(bus));

    always #5 clk = ~clk;
    always @(posedge clk) begin
        steps = steps + 3;
        -> tick;
    end

    task show;
        begin
            $display("@%0t tb.clk %b", $time, clk);
            $display("@%0t tb.rst %b", $time, rst);
            $display("@%0t tb.oe %b", $time, oe);
            $display("@%0t tb.count %b", $time, count);
            $display("@%0t tb.bus %b", $time, bus);
            $display("@%0t tb.wide %b", $time, wide);
            $display("@%0t tb.nibble %b", $time, nibble);
            $display("@%0t tb.steps %b", $time, steps);
            $display("@%0t tb.dut.carry %b", $time, dut.carry);
            $display("@%0t tb.dut.count %b", $time, dut.count);
        end
    endtask

    initial begin
        $dumpfile("dump.vcd");
        $dumpvars(0, tb);
        // Every change falls between two prints: a print at the time of a change could run
        // on either side of it.
        #3 show;
        #1 rst = 1;
        #3 show;
        #10 rst = 0;
        wide = {4'b10zx, 96'h0123_4567_89AB_CDEF_0011_2233};
        #1 show;
        repeat (12) begin
            #10 show;
        end
        #1 oe = 1;
        nibble = 4'b1010;
        wide = ~wide;
        repeat (20) begin
            #10 show;
        end
        #5 oe = 0;
        #2 show;
        #40 $finish;
    end
endmodule
