# kesncd 1.0.0: exact activity of a simulation.
# -activity is toggles per 1ns; -duty is the share of time at 1.
set_power_activity -pins [get_pins {
  m/0/D[5]
  s/c/A
}] -activity 0.25 -duty 0.5
set_power_activity -pins [get_pins {
  m/0/D[6]
  s/c/Y
  s/e/A
}] -activity 0.125 -duty 0.75
set_power_activity -pins [get_pins {
  n/B
  s/b/A
}] -activity 0 -duty 1
set_power_activity -pins [get_pins {
  n/A
  m/0/D[7]
  m/0/CK
  s/b/Y
}] -activity 0 -duty 0
