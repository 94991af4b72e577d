/** Used by: https://wavedrom.com/editor.html*/
{ signal: [
    { name: "CLK", wave: 'P..................' },
    { name: 'start', wave: 'l....h.l...........' },
    { name: 'reset', wave: 'lh..l..............' },
    { name: 'Dout', wave: 'l........hl..h.l...' },
    { name: 'Data', wave: 'l.......=...=...l..', data: [0,1,1,1,0,]}
  ]}
