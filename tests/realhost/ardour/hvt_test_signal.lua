ardour { ["type"] = "dsp", name = "HvTremolo Test Signal", category = "Utility", license = "MIT",
	author = "HvTremolo tests", description = [[Silence, then from sample 22050 a signal of exact
floats (k / 65536) that depends on the transport position alone: every export of a range is the
same.]] }

local start = 22050 -- as in session.lua

function dsp_ioconfig () return { { audio_in = 0, audio_out = 2 } } end

function dsp_run (ins, outs, n_samples)
	local position, rolling = Session:transport_sample (), Session:transport_rolling ()
	for c = 1, #outs do
		local samples = outs[c]:array ()
		for s = 1, n_samples do
			local n = position + s - 1
			local on = rolling and n >= start
			samples[s] = on and (((n * 40503 + c * 977) % 65536) - 32768) / 65536 or 0
		end
	end
end
