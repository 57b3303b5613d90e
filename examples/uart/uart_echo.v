// Echo: every byte that comes in on rxd goes out again on txd.
//
//   rxd -> rx -> fifo -> tx -> txd
//
// The FIFO holds what the far end is not ready to take (cts_n high). The
// watchdog is there for boards that strap wdt_enable high; it is kicked by each
// received byte.

`timescale 1ns / 100ps
`default_nettype none

module uart_echo (
  input  wire       clk,          // 50 MHz
  input  wire       rst_n,        // asynchronous, active low
  input  wire       rxd,
  input  wire       cts_n,
  input  wire       wdt_enable,
  input  wire [7:0] baud_div,     // clocks per baud tick, less one
  output wire       txd,
  output wire       bit_clk,      // test point
  output wire       fault,        // a byte was lost; stays until reset
  output wire       wdt_irq
);

  wire       baud_tick;
  wire [7:0] rx_data;
  wire       rx_valid;
  wire       rx_frame_err;
  wire       hold;                // cts_n in our clock domain
  wire [7:0] fifo_data;
  wire [4:0] fifo_level;
  wire       fifo_empty;
  wire       fifo_overrun;
  reg        fifo_rd;
  reg        tx_start;
  wire       tx_busy;
  wire [3:0] wdt_stage;

  uart_baud baud (
    .clk     (clk),
    .rst_n   (rst_n),
    .divisor (baud_div),
    .tick    (baud_tick),
    .bit_clk (bit_clk)
  );

  uart_rx rx (
    .clk       (clk),
    .rst_n     (rst_n),
    .tick      (baud_tick),
    .rxd       (rxd),
    .data      (rx_data),
    .valid     (rx_valid),
    .frame_err (rx_frame_err)
  );

  byte_fifo fifo (
    .clk     (clk),
    .rst_n   (rst_n),
    .wr      (rx_valid),
    .wr_data (rx_data),
    .rd      (fifo_rd),
    .rd_data (fifo_data),
    .empty   (fifo_empty),
    .full    (),                   // overrun tells all that matters here
    .level   (fifo_level),
    .overrun (fifo_overrun)
  );

  bit_sync cts_sync (
    .clk   (clk),
    .rst_n (rst_n),
    .d     (cts_n),
    .q     (hold)
  );

  // Hand-over to the transmitter: fifo_rd, one clock later the byte and
  // tx_start, one clock later tx_busy. Each of the three keeps the next read
  // away.
  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      fifo_rd  <= 1'b0;
      tx_start <= 1'b0;
    end else begin
      fifo_rd  <= ~fifo_empty & ~hold & ~fifo_rd & ~tx_start & ~tx_busy;
      tx_start <= fifo_rd;
    end

  uart_tx tx (
    .clk   (clk),
    .rst_n (rst_n),
    .tick  (baud_tick),
    .start (tx_start),
    .data  (fifo_data),
    .txd   (txd),
    .busy  (tx_busy)
  );

  watchdog wdt (
    .clk    (clk),
    .rst_n  (rst_n),
    .enable (wdt_enable),
    .kick   (rx_valid),
    .stage  (wdt_stage),
    .irq    (wdt_irq)
  );

  assign fault = rx_frame_err | fifo_overrun;

endmodule

`default_nettype wire
