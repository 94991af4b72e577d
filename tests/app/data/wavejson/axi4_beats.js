{ signal: [
    { name: "ACLK",     wave: "P.............." },
    { name: "ARESETn",  wave: "01............." },
    { name: "AR",       wave: "x.3x4x.........", data: ["T1", "T2"] },
    { name: "R",        wave: "xxx334444x.....", data: ["T1D0", "T1D1", "T2D0", "T2D1", "T2D3", "T2D4"]},
    { name: "AW",       wave: "x.....5x6x.....", data: ["T3", "T4"] },
    { name: "W",        wave: "x......55x6666.", data: ["T3D0", "T3D1", "T4D0", "T4D1", "T4D2", "T4D3"]},
    { name: "B",        wave: "x........5x...6", data: ["T3", "T4"]}
  ]
}
