{ signal: [
  { name: "clk",     wave: "p....." },
  { name: "Data",    wave: "x345.x",  data: ["head", "center", "tail"] },
  { name: "Request", wave: "01...0" }
  ],
  config: { hscale: 1 }
}
