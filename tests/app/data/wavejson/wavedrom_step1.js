{ signal: [{ name: "Alfa", wave: "01.zx=ud.23.45" }] }
