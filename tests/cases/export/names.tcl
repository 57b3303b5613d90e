# kesncd 1.0.0: exact activity of a simulation.
# -activity is toggles per 1ns; -duty is the share of time at 1.
set_power_activity -pins [get_pins {
  tb/clk
  tb/clk
  tb/d
  tb/q[0]
  tb/mem[3][0]
  tb/g[0]/u.2/y
  tb/g(0)/inner/y
  tb/twice/y
}] -activity 0.08333333333333333 -duty 0.08333333333333333
set_power_activity -pins [get_pins {
  tb/NET[9]
  tb/q[1]
  tb/mem[3][-1]
}] -activity 0.041666666666666664 -duty 0.75
set_power_activity -pins [get_pins {
  tb/T0
  tb/a:b
  tb/d
  tb/g[0]/y
  tb/g(0)/y
  tb/twice/y
}] -activity 0 -duty 0.5
set_power_activity -pins [get_pins {
  tb/NET[8]
  tb/q[0]
  tb/mem[3][0]
}] -activity 0 -duty 0
