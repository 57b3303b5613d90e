// Test bench of uart_echo: a host sends twelve bytes at 1 Mbaud and expects the
// same bytes back. In the middle it holds cts_n high for 40 us, so that the
// FIFO fills and drains again.
//
// Prints a PASS or FAIL line for each byte and one for the whole run, and writes
// uart.vcd into the directory that the simulator runs in.

`timescale 1ns / 100ps
`default_nettype none

module uart_tb;

  reg        clk;
  reg        rst_n;

  // Pins of the device under test.
  reg        rxd;
  reg        cts_n;
  reg        wdt_enable;
  reg  [7:0] baud_div;
  wire       txd;
  wire       bit_clk;
  wire       fault;
  wire       wdt_irq;

  // The host's own view of the two lines.
  reg  [7:0] send_byte;      // byte on rxd now; turns with each bit
  reg  [3:0] send_count;     // bytes sent so far
  reg  [7:0] echo_byte;      // last byte taken from txd
  reg  [3:0] echo_count;     // bytes taken so far
  reg  [4:0] peak_level;     // highest filling of the FIFO
  reg  [3:0] errors;

  reg  [7:0] message [0:11];

  uart_echo soc (
    .clk        (clk),
    .rst_n      (rst_n),
    .rxd        (rxd),
    .cts_n      (cts_n),
    .wdt_enable (wdt_enable),
    .baud_div   (baud_div),
    .txd        (txd),
    .bit_clk    (bit_clk),
    .fault      (fault),
    .wdt_irq    (wdt_irq)
  );

  // 50 MHz: low for 10 ns, high for 10 ns.
  initial clk = 1'b0;
  always #10 clk = ~clk;

  // Reset is on from the first instant, so no register shows an unknown value.
  initial begin
    rst_n <= 1'b0;
    #205 rst_n <= 1'b1;
  end

  initial begin
    $dumpfile("uart.vcd");
    $dumpvars(0, uart_tb);
  end

  initial begin
    message[0]  = "H";
    message[1]  = "e";
    message[2]  = "l";
    message[3]  = "l";
    message[4]  = "o";
    message[5]  = ",";
    message[6]  = " ";
    message[7]  = "U";
    message[8]  = "A";
    message[9]  = "R";
    message[10] = "T";
    message[11] = "!";
  end

  // Host, sending: start bit, eight data bits, stop bit, 1 us each. The odd 3 ns
  // keep the edges of rxd away from those of clk.
  initial begin
    rxd        = 1'b1;
    wdt_enable = 1'b0;
    baud_div   = 8'd4;
    send_byte  = 8'h00;
    send_count = 4'd0;
    #1003;
    while (send_count != 4'd12) begin
      send_byte = message[send_count];
      rxd = 1'b0;
      #1000;
      repeat (8) begin
        rxd = send_byte[0];
        send_byte = {send_byte[0], send_byte[7:1]};
        #1000;
      end
      rxd = 1'b1;
      send_count = send_count + 4'd1;
      #1000;
    end
  end

  // Host, handshake: not ready for a while after the third byte.
  initial begin
    cts_n = 1'b0;
    wait (send_count == 4'd3);
    cts_n = 1'b1;
    #40000 cts_n = 1'b0;
  end

  // Host, receiving: each bit is taken in its middle.
  initial begin
    echo_byte  = 8'h00;
    echo_count = 4'd0;
    errors     = 4'd0;
    while (echo_count != 4'd12) begin
      @(negedge txd);
      #500;
      if (txd !== 1'b0) begin
        $display("FAIL: no start bit before byte %0d", echo_count);
        errors = errors + 4'd1;
      end
      repeat (8) begin
        #1000 echo_byte = {txd, echo_byte[7:1]};
      end
      #1000;
      if (txd === 1'b1 && echo_byte === message[echo_count])
        $display("PASS: byte %0d is %h", echo_count, echo_byte);
      else begin
        $display("FAIL: byte %0d is %h, not %h, stop bit %b",
                 echo_count, echo_byte, message[echo_count], txd);
        errors = errors + 4'd1;
      end
      echo_count = echo_count + 4'd1;
    end
  end

  initial peak_level = 5'd0;
  always @(posedge clk)
    if (soc.fifo_level > peak_level)
      peak_level <= soc.fifo_level;

  // The run is 175 us long whatever happens in it: 8750 whole clocks.
  initial begin
    #175000;
    if (echo_count != 4'd12) begin
      $display("FAIL: only %0d bytes came back", echo_count);
      errors = errors + 4'd1;
    end
    if (fault !== 1'b0 || wdt_irq !== 1'b0) begin
      $display("FAIL: fault %b, wdt_irq %b", fault, wdt_irq);
      errors = errors + 4'd1;
    end
    if (peak_level < 5'd4 || soc.fifo_level != 5'd0) begin
      $display("FAIL: FIFO peak %0d, left %0d", peak_level, soc.fifo_level);
      errors = errors + 4'd1;
    end
    if (errors == 4'd0)
      $display("PASS: 12 bytes echoed, FIFO peak %0d", peak_level);
    else
      $display("FAIL: %0d errors", errors);
    $finish;
  end

endmodule

`default_nettype wire
