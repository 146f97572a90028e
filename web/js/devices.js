// The device types, and the keys of their remote controls: [label, product key, accessible name].
const arrows = [
  ["Guide", "epg", "Guide"], ["▲", "up_arrow", "Up"], ["Info", "info", "Information"],
  ["◀", "left_arrow", "Left"], ["OK", "enter", "OK"], ["▶", "right_arrow", "Right"],
  ["Back", "back", "Back"], ["▼", "down_arrow", "Down"], ["Exit", "exit", "Exit"],
];
const digits = [1, 2, 3, 4, 5, 6, 7, 8, 9].map(n => [`${n}`, `number_${n}`, `${n}`])
  .concat([["Last", "last_channel", "Last channel"], ["0", "number_0", "0"]]);
const transport = [
  ["◀◀", "fast_reverse", "Rewind"], ["▶", "play", "Play"], ["▶▶", "fast_forward", "Fast forward"],
  ["■", "stop", "Stop"], ["❚❚", "pause", "Pause"], ["●", "record", "Record"],
];
const channels = [["Ch −", "channel_preset_down", "Channel down"], ["Ch +", "channel_preset_up", "Channel up"]];

export const kinds = {
  DEVICE_TYPE_TV: {
    short: "TV", name: "Television", the: "the television", note: "Picture, sound and inputs",
    groups: {
      Power: [["Power", "tv_power", "Power"], ["Input", "tv_input", "Input"], ["Mute", "mute", "Mute"]],
      Volume: [["Vol −", "volume_down", "Volume down"], ["Vol +", "volume_up", "Volume up"]],
      Channel: channels,
      Menu: arrows, Digits: digits,
    },
  },
  DEVICE_TYPE_CBL_SAT: {
    short: "CBL_SAT", name: "Set-top box", the: "the set-top box", note: "Cable, satellite, aerial",
    groups: {Power: [["Power", "source_power", "Power"], ...channels], Menu: arrows, Playback: transport, Digits: digits},
  },
  DEVICE_TYPE_BD_DVD: {
    short: "BD_DVD", name: "Disc player", the: "the disc player", note: "Blu-ray and DVD",
    groups: {Power: [["Power", "source_power", "Power"], ["Menu", "dvd_menu", "Disc menu"]], Menu: arrows, Playback: transport},
  },
  DEVICE_TYPE_STREAMING: {
    short: "STREAMING", name: "Streamer", the: "the streamer", note: "Stick or box on the network",
    groups: {Power: [["Power", "source_power", "Power"]], Menu: arrows, Playback: transport},
  },
};

export const kindOf = short => Object.values(kinds).find(kind => kind.short === short) ?? kinds.DEVICE_TYPE_TV;

// Volume keys go to the television by HDMI-CEC, without a code set.
export const byCec = key => ["mute", "volume_up", "volume_down"].includes(key);
