-- ardour7-lua session.lua SESSION_DIR EXPORT_DIR LENGTH P0 P1 P2 P3 P4: a headless session whose
-- track runs the test signal through HvTremolo, parameters 0 to 4 set to P0..P4, exported to float
-- WAV with the plug-in (wet.wav) and without (dry.wav), and saved. Without P0..P4: that session
-- loaded again and exported (reloaded.wav).
-- Ardour runs plug-ins all the time, stopped and in an export's pre-roll too, so both speeds are
-- automated to 0 (a stage with speed 0 does not advance) up to the signal's first sample and step
-- to their values there: the oscillators meet the signal at a fresh instance's phase.
-- With HVT_LV2_URI set, the LV2 plug-in of that URI (found on LV2_PATH) takes the module's place.

local session_dir, export_dir, length = arg[1], arg[2], tonumber(arg[3])
local start = 22050 -- the test signal's first sample: one beat at a new session's 120 bpm
assert(AudioEngine:set_backend("None (Dummy)", "", ""), "no Dummy backend")

local function export (s, name)
	local e = s:simple_export()
	e:set_name(name)
	e:set_folder(export_dir)
	e:set_range(0, start + length)
	assert(e:set_preset("5e0f5c1a-8d7b-4a51-9f3e-4d2b1c0a9e77"), "no float WAV export preset")
	assert(e:run_export(), "export " .. name .. " failed")
end

if not arg[4] then
	export(assert(load_session(session_dir, "hvtremolo"), "cannot load the session"), "reloaded")
	close_session()
	return
end

local s = assert(create_session(session_dir, "hvtremolo", 44100), "cannot create the session")
local track = s:new_audio_track(2, 2, nil, 1, "Tremolo", ARDOUR.PresentationInfo.max_order,
	ARDOUR.TrackMode.Normal, true):front()
track:input():disconnect_all(nil)
-- Without the panner each channel reaches the same channel of the mix bus unchanged.
track:panner_shell():set_bypassed(true)
local signal = ARDOUR.LuaAPI.new_luaproc(s, "HvTremolo Test Signal")
assert(not signal:isnil(), "no test signal script")
track:add_processor_by_index(signal, 0, nil, true)
local lv2_uri = os.getenv("HVT_LV2_URI")
local fx = lv2_uri and ARDOUR.LuaAPI.new_plugin(s, lv2_uri, ARDOUR.PluginType.LV2, "")
	or ARDOUR.LuaAPI.new_plugin(s, "1213617208", ARDOUR.PluginType.LXVST, "")
assert(not fx:isnil(), "Ardour cannot load HvTremolo")
-- Automation names an LV2 control by its port; the plug-in's first control is port 4.
local first_control_port = lv2_uri and 4 or 0
-- Inactive until its settings are complete.
track:add_processor_by_index(fx, 1, nil, false)

for i = 0, 4 do
	ARDOUR.LuaAPI.set_processor_param(fx, i, (i == 1 or i == 3) and 0 or tonumber(arg[i + 4]))
end
for _, i in ipairs({ 1, 3 }) do
	local _, control_list = ARDOUR.LuaAPI.plugin_automation(fx, i)
	-- Discrete, so that the value steps at the point, which beat time puts on START exactly.
	control_list:set_interpolation(0)
	control_list:add(Temporal.timepos_t(0), 0, false, false)
	control_list:add(Temporal.timepos_t(start), tonumber(arg[i + 4]), false, false)
	fx:to_automatable():automation_control(
		Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, i + first_control_port), false)
		:set_automation_state(ARDOUR.AutoState.Play)
end
fx:activate()
export(s, "wet")
s:save_state("", false, false, false, false, false)
fx:deactivate()
export(s, "dry")
close_session()
