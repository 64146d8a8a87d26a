-- ardour7-lua gui_session.lua SESSION_DIR: a session whose one track holds HvTremolo with its
-- first program, saved. Prints the name Ardour's GUI gives the plug-in's window in the session's
-- window state, "window P-<track id>-<plug-in id>", so that a test can ask for it open on load.

assert(AudioEngine:set_backend("None (Dummy)", "", ""), "no Dummy backend")
local s = assert(create_session(arg[1], "hvtremolo", 44100), "cannot create the session")
local track = s:new_audio_track(2, 2, nil, 1, "Tremolo", ARDOUR.PresentationInfo.max_order,
	ARDOUR.TrackMode.Normal, true):front()
local fx = ARDOUR.LuaAPI.new_plugin(s, "1213617208", ARDOUR.PluginType.LXVST, "")
assert(not fx:isnil(), "Ardour cannot load HvTremolo")
track:add_processor_by_index(fx, 0, nil, true)
assert(s:save_state("", false, false, false, false, false) == 0, "cannot save the session")
print("window P-" .. track:to_stateful():id():to_s() .. "-" .. fx:to_stateful():id():to_s())
close_session()
